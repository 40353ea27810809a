#pragma once

#include <QString>

namespace tavril {

/// A text as the title of a button, a menu item, or the caption of a field. In these, a single "&" is not
/// shown and makes a key of the next character.
inline QString plainTitle(QString text) {
  return text.replace(u'&', QStringLiteral("&&"));
}

/// The text of such a title.
inline QString textOfTitle(QString title) {
  return title.replace(QStringLiteral("&&"), QStringLiteral("&"));
}

}  // namespace tavril
