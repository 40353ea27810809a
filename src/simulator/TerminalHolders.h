#pragma once

#include <string>

namespace tavril::simulator {

/// Whether any process that can be seen has the terminal at this path open, besides through the descriptor
/// `own` of this one, or a lock on it. Opens nothing.
bool isHeldByOthers(const std::string &path, int own);

}  // namespace tavril::simulator
