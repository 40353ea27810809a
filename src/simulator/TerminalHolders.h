#pragma once

#include <string>

namespace tavril::simulator {

/// Whether a process has a lock on the terminal or has it open, except through this process's descriptor
/// `own`. Only processes that this one may examine count. Opens nothing.
bool isHeldByOthers(const std::string &path, int own);

}  // namespace tavril::simulator
