#include "platform/linux/LanguageTexts.h"

namespace tavril {

QString LanguageTexts::text(QStringView key) const {
  const QString name = key.toString();
  return texts_.value(name, name);
}

}  // namespace tavril
