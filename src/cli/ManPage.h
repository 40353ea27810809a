#pragma once

#include <QString>

#include <span>

namespace tavril::cli {

struct CommandBook;

/// The manual page, in the man macros of troff.
QString manPage(const CommandBook &book, std::span<const int> defaults);
/// The same list of registers for a document.
QString registerListInMarkdown(std::span<const int> defaults);

}  // namespace tavril::cli
