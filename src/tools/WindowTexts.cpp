#include "tools/WindowTexts.h"

namespace tavril {

QString windowTitleFor(QString itemText) {
  while (itemText.endsWith(u'…') || itemText.endsWith(u'.')) itemText.chop(1);
  return itemText.trimmed();
}

}  // namespace tavril
