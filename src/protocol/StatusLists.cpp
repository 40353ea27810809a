#include "protocol/StatusLists.h"

#include "platform/Log.h"
#include "platform/StringTable.h"

namespace tavril {

namespace {

QString separator() {
  return u'\n' + QString(45, u'-') + u'\n';
}

void startItem(StatusList &list, int bit, Log &log) {
  if (list.text.isEmpty()) list.text = separator();
  ++list.count;
  log.write(QStringLiteral("StrToChar=%1").arg(bit));
}

void appendItem(StatusList &list, const QString &text) {
  list.text += QStringLiteral("%1. ").arg(list.count) + text + u'\n';
}

}  // namespace

StatusList statusErrorList(int bits, const StringTable &strings, Log &log) {
  StatusList list;
  for (int i = 0; i < 8; ++i) {
    const int mask = 1 << i;
    const int bit = bits & mask;
    log.write(QStringLiteral("bit=%1,%2").arg(QString::number(mask, 16), QString::number(bit, 16)));
    if (bit == 0) continue;
    startItem(list, bit, log);
    if (i == 4) {
      --list.count;  // Kept: C19.
    } else {
      appendItem(list, strings.text(QStringLiteral("StatusErrorMsg%1").arg(i)));
    }
  }
  return list;
}

StatusList statusDetailList(int bits, bool shutDownDisabled, const StringTable &strings, Log &log) {
  StatusList list;
  for (int i = 4; i < 8; ++i) {
    const int mask = 1 << i;
    log.write(QStringLiteral("bit=%1").arg(QString::number(mask, 16)));
    if ((bits & mask) == 0) continue;
    startItem(list, bits & mask, log);
    QString key = QStringLiteral("StatusDetailMsg%1").arg(i);
    if (i == 6) key += shutDownDisabled ? u'0' : u'1';
    appendItem(list, strings.text(key));
  }
  return list;
}

}  // namespace tavril
