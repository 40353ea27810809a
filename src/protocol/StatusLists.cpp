#include "protocol/StatusLists.h"

#include "platform/Log.h"
#include "platform/StringTable.h"

namespace tavril {

namespace {

QString separator() {
  return u'\n' + QString(45, u'-') + u'\n';
}

void startItem(StatusList &list, int bit, Log &log) {
  if (list.keyedText.isEmpty()) list.keyedText = KeyedText::words(separator());
  ++list.count;
  log.write(QStringLiteral("StrToChar=%1").arg(bit));
}

void appendItem(StatusList &list, const QString &key) {
  list.keyedText += KeyedText::words(QStringLiteral("%1. ").arg(list.count)) + KeyedText(key) +
                    KeyedText::words(QStringLiteral("\n"));
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
      --list.count;  // meant: bit 4 has no message, yet it may put the separator up
    } else {
      appendItem(list, QStringLiteral("StatusErrorMsg%1").arg(i));
    }
  }
  list.text = list.keyedText.in(strings);
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
    appendItem(list, key);
  }
  list.text = list.keyedText.in(strings);
  return list;
}

}  // namespace tavril
