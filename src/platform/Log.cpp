#include "platform/Log.h"

namespace tavril {

QString listText(const QStringList &items) {
  return u'(' + items.join(QStringLiteral(", ")) + u')';
}

}  // namespace tavril
