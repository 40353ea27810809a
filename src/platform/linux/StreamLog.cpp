#include "platform/linux/StreamLog.h"

#include <QByteArray>
#include <QChar>
#include <QMessageLogger>

namespace tavril {

namespace {

bool isSteering(QChar character) {
  const char16_t code = character.unicode();
  return code < 0x20 || (code >= 0x7f && code < 0xa0) || code == 0x2028 || code == 0x2029;
}

}  // namespace

StreamLog::StreamLog() : category_("tavril", QtInfoMsg) {
  const QByteArray wish = qgetenv("TAVRIL_LOG");
  if (!wish.isEmpty() && wish != "0") category_.setEnabled(QtDebugMsg, true);
}

void StreamLog::write(const QString &line) {
  if (!isEnabled()) return;
  QMessageLogger().debug(category_, "%s", qUtf8Printable(printable(line)));
}

QString StreamLog::printable(const QString &line) {
  QString shown;
  shown.reserve(line.size());
  for (const QChar character : line) {
    if (character == u'\n') {
      shown += QStringLiteral("\n    ");
    } else if (character == u'\t' || !isSteering(character)) {
      shown += character;
    } else {
      shown += QStringLiteral("\\u%1").arg(int{character.unicode()}, 4, 16, QChar(u'0'));
    }
  }
  return shown;
}

}  // namespace tavril
