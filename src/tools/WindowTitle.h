#pragma once

#include <QString>

namespace tavril {

/// The title of the window that a menu item opens: the item's text without the dots at its end.
QString windowTitleFor(QString itemText);

}  // namespace tavril
