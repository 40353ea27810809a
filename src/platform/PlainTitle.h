#pragma once

#include <QString>

namespace tavril {

/// A text as the title of a button, of a menu item, or of a caption that has a field: there a single "&" is
/// not shown and makes a key of the character after it.
inline QString plainTitle(QString text) {
  return text.replace(u'&', QStringLiteral("&&"));
}

/// The text of such a title.
inline QString textOfTitle(QString title) {
  return title.replace(QStringLiteral("&&"), QStringLiteral("&"));
}

}  // namespace tavril
