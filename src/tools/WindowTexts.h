#pragma once

#include <QMargins>
#include <QString>

namespace tavril {

/// The title of the window that a menu item opens: the item's text without the dots at its end.
inline QString windowTitleFor(QString itemText) {
  while (itemText.endsWith(u'…') || itemText.endsWith(u'.')) itemText.chop(1);
  return itemText.trimmed();
}

/// The space around the path in a field, in pixels.
inline constexpr QMargins pathMargins{6, 0, 6, 0};

}  // namespace tavril
