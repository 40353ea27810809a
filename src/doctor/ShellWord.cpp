#include "doctor/ShellWord.h"

#include <QChar>
#include <QStringView>

#include <algorithm>

namespace tavril::doctor {

QString shellWord(const QString &text) {
  const bool isPlain = !text.isEmpty() && std::ranges::all_of(text, [](QChar c) {
    return (c >= u'a' && c <= u'z') || (c >= u'A' && c <= u'Z') || (c >= u'0' && c <= u'9') ||
           QStringView(u"/._-+:@").contains(c);
  });
  if (isPlain && !text.startsWith(u'-')) return text;
  return u'\'' + QString(text).replace(u'\'', QStringLiteral("'\\''")) + u'\'';
}

}  // namespace tavril::doctor
