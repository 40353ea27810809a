#pragma once

#include <QString>

namespace tavril::cli {

struct CommandBook;

/// The manual page, in the man macros of troff.
QString manPage(const CommandBook &book);

}  // namespace tavril::cli
