#include "platform/KeyedText.h"

#include "platform/StringTable.h"

namespace tavril {

KeyedText KeyedText::words(const QString &words) {
  KeyedText text;
  if (!words.isEmpty()) text.parts_.append({words, false});
  return text;
}

KeyedText &KeyedText::operator+=(const KeyedText &rest) {
  parts_ += rest.parts_;
  return *this;
}

QString KeyedText::in(const StringTable &strings) const {
  QString text;
  for (const Part &part : parts_) text += part.isKey ? strings.text(part.text) : part.text;
  return text;
}

}  // namespace tavril
