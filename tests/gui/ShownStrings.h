#pragma once

#include <QString>

#include <vector>

namespace tavril {

/// A text that can be seen or heard somewhere in the program, and where.
struct ShownString {
  QString where;
  QString text;
};

/// All texts of all widgets and menu entries that there are: shown ones, titles, tool tips, entries of lists,
/// and what a screen reader is told. Without the languages' own names in the language menu.
std::vector<ShownString> shownStrings();

}  // namespace tavril
