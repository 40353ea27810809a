#pragma once

#include <QString>

namespace tavril::cli {

struct CommandBook;

/// Scripts that complete commands, options, registers and files in the shell of that name.
QString bashCompletion(const CommandBook &book);
QString zshCompletion(const CommandBook &book);
QString fishCompletion(const CommandBook &book);

}  // namespace tavril::cli
