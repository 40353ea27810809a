#include "cli/SendCommand.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/FrameWords.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "cli/Session.h"

#include <algorithm>

namespace tavril::cli {

namespace {

[[noreturn]] void refuse(const QString &problem) {
  throw Failure{ExitCode::Usage, QStringLiteral("this is no frame: ") + problem};
}

QByteArray bytesFrom(const QStringList &texts) {
  QByteArray bytes;
  for (QString text : texts.join(u' ').split(u' ', Qt::SkipEmptyParts)) {
    const QString typed = text;
    if (text.startsWith(u"0x") || text.startsWith(u"0X")) text = text.mid(2);
    const bool isHex = std::all_of(text.begin(), text.end(), [](QChar c) {
      return (c >= u'0' && c <= u'9') || (c.toLower() >= u'a' && c.toLower() <= u'f');
    });
    if (text.isEmpty() || text.size() % 2 != 0 || !isHex) {
      refuse(QStringLiteral("\"%1\" is no byte: write two hexadecimal digits for each.").arg(typed));
    }
    bytes += QByteArray::fromHex(text.toLatin1());
  }
  return bytes;
}

int byteAt(const QByteArray &bytes, std::size_t index) {
  return static_cast<unsigned char>(bytes[static_cast<qsizetype>(index)]);
}

void checkValue(int number, ValueRange range, const QString &name) {
  if (range.contains(number)) return;
  throw Failure{ExitCode::BadValue,
                QStringLiteral("%1: %2 is out of range (%3).").arg(name).arg(number).arg(range.text())};
}

void checkParameters(const Command &command) {
  const QByteArray last = command.parameters.right(2);
  const int word = last.size() == 2 ? byteAt(last, 0) * 256 + byteAt(last, 1) : 0;
  if (command.code == CommandCode::SetServoPosition)
    checkValue(word, positionRange, QStringLiteral("position"));
  const int number = command.registerNumber();
  if (command.code != CommandCode::ReadServoSettingValue &&
      command.code != CommandCode::WriteServoSettingValue)
    return;
  const RegisterRow *row = findRegister(number);
  if (!row)
    refuse(QStringLiteral("there is no register %1; they go from 1 to %2.").arg(number).arg(registerCount));
  if (command.code == CommandCode::ReadServoSettingValue) return;
  if (!row->isSetting())
    refuse(QStringLiteral("%1 is a live value, which cannot be written.").arg(row->nameKey));
  // The sixteen bits as the servo takes them: only where negative values are allowed do they have a sign.
  const ValueRange range = settingRange(*row);
  checkValue(range.minimum < 0 ? static_cast<std::int16_t>(word) : word, range, row->nameKey.toString());
}

}  // namespace

Command commandFromHex(const QStringList &texts) {
  const QByteArray bytes = bytesFrom(texts);
  constexpr qsizetype shortest = 4;
  if (bytes.size() < shortest) refuse(QStringLiteral("%1 bytes are too few.").arg(bytes.size()));
  if (byteAt(bytes, FrameByte::start) != startMark) refuse(QStringLiteral("it must begin with FF."));
  if (static_cast<unsigned char>(bytes.back()) != endMark) refuse(QStringLiteral("it must end with FE."));
  const int length = byteAt(bytes, FrameByte::length);
  if (length != bytes.size()) {
    refuse(QStringLiteral("the second byte says %1 bytes, but there are %2.").arg(length).arg(bytes.size()));
  }
  const auto code = static_cast<CommandCode>(byteAt(bytes, FrameByte::code));
  const auto *row = std::ranges::find(frameTable, code, &FrameRow::code);
  if (row == frameTable.end()) {
    refuse(QStringLiteral("%1 is the code of no command.").arg(inHex(bytes.mid(2, 1))));
  }
  if (static_cast<int>(row->length()) != length) {
    refuse(QStringLiteral("a command of code %1 has %2 bytes, not %3.")
               .arg(inHex(bytes.mid(2, 1)))
               .arg(row->length())
               .arg(length));
  }
  const auto first = static_cast<qsizetype>(FrameByte::firstParameter);
  Command command{code, bytes.mid(first, bytes.size() - first - 1)};
  checkParameters(command);
  return command;
}

void sendCommand(Session &session, const Command &command) {
  const QByteArray reply = session.servo.send(command);
  session.console.data(QStringLiteral("%1  %2\n").arg(inHex(reply), replyInWords(reply)));
  const bool isReport = static_cast<CommandCode>(byteAt(reply, FrameByte::code)) == CommandCode::ErrorMessage;
  if (isReport && command.code != CommandCode::ErrorMessage) {
    throw Failure{ExitCode::Failed,
                  QStringLiteral("the bridge reported an error: its meaning stands beside the reply.")};
  }
}

}  // namespace tavril::cli
