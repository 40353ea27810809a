#include "doctor/ResultTexts.h"

#include "platform/StringTable.h"

namespace tavril::doctor {

ResultTexts ResultTexts::of(const Result &result, const StringTable &strings) {
  ResultTexts texts;
  texts.title = strings.text(titleKeyOf(result.check));
  texts.finding = filled(strings.text(result.finding), result.values);
  if (!result.advice.isEmpty()) texts.advice = filled(strings.text(result.advice), result.values);
  return texts;
}

QString filled(const QString &text, const QStringList &values) {
  QString result;
  qsizetype at = 0;
  while (at < text.size()) {
    const bool isPlace = text.size() - at >= 4 && text[at] == u'%' && text[at + 1] >= u'1' &&
                         text[at + 1] <= u'9' && text[at + 2] == u'$' && text[at + 3] == u'@';
    if (!isPlace) {
      result += text[at];
      ++at;
      continue;
    }
    result += values.value(text[at + 1].unicode() - u'1');
    at += 4;
  }
  return result;
}

}  // namespace tavril::doctor
