#include "protocol/StatusLists.h"

#include "platform/Log.h"
#include "wire/StatusBits.h"

#include <QString>
#include <QStringView>

namespace tavril {

namespace {

QString separator() {
  return u'\n' + QString(45, u'-') + u'\n';
}

void startItem(StatusList &list, int bit, Log &log) {
  if (list.text.isEmpty()) list.text = KeyedText::words(separator());
  ++list.count;
  log.write(QStringLiteral("StrToChar=%1").arg(bit));
}

void appendItem(StatusList &list, QStringView key) {
  list.text += KeyedText::words(QStringLiteral("%1. ").arg(list.count)) + KeyedText(key) +
               KeyedText::words(QStringLiteral("\n"));
}

}  // namespace

StatusList statusErrorList(int bits, Log &log) {
  StatusList list;
  for (const wire::StatusBit &row : wire::errorBits) {
    const int bit = bits & row.mask();
    log.write(QStringLiteral("bit=%1,%2").arg(QString::number(row.mask(), 16), QString::number(bit, 16)));
    if (bit == 0) continue;
    startItem(list, bit, log);
    if (row.key.empty()) {
      --list.count;  // Kept: C19.
    } else {
      appendItem(list, row.key);
    }
  }
  return list;
}

StatusList statusDetailList(int bits, bool shutDownDisabled, Log &log) {
  StatusList list;
  for (const wire::StatusBit &row : wire::detailBits) {
    log.write(QStringLiteral("bit=%1").arg(QString::number(row.mask(), 16)));
    const int bit = bits & row.mask();
    if (bit == 0) continue;
    startItem(list, bit, log);
    appendItem(list, row.keyFor(shutDownDisabled));
  }
  return list;
}

}  // namespace tavril
