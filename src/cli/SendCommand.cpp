#include "cli/SendCommand.h"

#include "cli/Changes.h"
#include "cli/Console.h"
#include "cli/Conversation.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/FrameWords.h"
#include "cli/JsonText.h"
#include "cli/RegisterFacts.h"
#include "cli/Servo.h"
#include "cli/Session.h"

#include <QByteArray>
#include <QChar>
#include <QString>

#include <algorithm>
#include <cstdint>

namespace tavril::cli {

namespace {

[[noreturn]] void refuse(const QString &problem) {
  throw Failure{ExitCode::Usage, QStringLiteral("this is not a valid frame: ") + problem};
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
      refuse(QStringLiteral("\"%1\" is not a byte. Write two hexadecimal digits for each byte.")
                 .arg(shown(typed)));
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

/// The last two parameters.
int wordOf(const Command &command) {
  const QByteArray last = command.parameters.right(2);
  return last.size() == 2 ? byteAt(last, 0) * 256 + byteAt(last, 1) : 0;
}

void checkParameters(const Command &command) {
  const int word = wordOf(command);
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
    refuse(QStringLiteral("%1 is measured by the servo and cannot be written.").arg(row->nameKey));
  // The sixteen bits as the servo takes them: only where negative values are allowed do they have a sign.
  const ValueRange range = settingRange(*row);
  checkValue(range.minimum < 0 ? static_cast<std::int16_t>(word) : word, range, row->nameKey.toString());
}

}  // namespace

Command commandFromHex(const QStringList &texts) {
  const QByteArray bytes = bytesFrom(texts);
  constexpr qsizetype shortest = 4;
  if (bytes.size() < shortest)
    refuse(QStringLiteral("%1 cannot be a whole frame.").arg(counted(bytes.size(), "byte", "bytes")));
  if (byteAt(bytes, FrameByte::start) != startMark) refuse(QStringLiteral("it must begin with FF."));
  if (static_cast<unsigned char>(bytes.back()) != endMark) refuse(QStringLiteral("it must end with FE."));
  const int length = byteAt(bytes, FrameByte::length);
  if (length != bytes.size()) {
    refuse(QStringLiteral("the second byte says %1, but there are %2.")
               .arg(counted(length, "byte", "bytes"))
               .arg(bytes.size()));
  }
  const auto code = static_cast<CommandCode>(byteAt(bytes, FrameByte::code));
  const auto *row = std::ranges::find(frameTable, code, &FrameRow::code);
  if (row == frameTable.end()) {
    refuse(QStringLiteral("there is no command with the code %1.").arg(inHex(bytes.mid(2, 1))));
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

void expectConfirmed(const Command &command, bool isConfirmed) {
  if (isConfirmed) return;
  if (command.code == CommandCode::WriteServoSettingValue) {
    const QStringList dangers = dangersOf({{command.registerNumber(), wordOf(command)}}, {});
    if (dangers.isEmpty()) return;
    throw Failure{ExitCode::BadValue,
                  dangers.join(u'\n') + QStringLiteral("\nNothing was sent. Confirm with --yes.")};
  }
  if (command.code != CommandCode::RebootServo && command.code != CommandCode::ResetServo) return;
  throw Failure{ExitCode::Usage,
                QStringLiteral("this is the frame to %1. Confirm with --yes.").arg(commandInWords(command))};
}

void sendCommand(Session &session, const Command &command, bool json) {
  const QByteArray reply = session.servo.send(command);
  session.console.data(json ? QStringLiteral("{\"port\": %1, \"sent\": %2, \"reply\": %3, \"meaning\": %4}\n")
                                  .arg(jsonText(session.line.name()), jsonText(inHex(command.frame())),
                                       jsonText(inHex(reply)), jsonText(replyInWords(reply)))
                            : QStringLiteral("%1  %2\n").arg(inHex(reply), replyInWords(reply)));
  const bool isReport = static_cast<CommandCode>(byteAt(reply, FrameByte::code)) == CommandCode::ErrorMessage;
  if (isReport && command.code != CommandCode::ErrorMessage) {
    throw Failure{exitCodeOf(byteAt(reply, FrameByte::firstParameter)),
                  QStringLiteral("the bridge answered \"%1\" with: %2.")
                      .arg(commandInWords(command), replyInWords(reply))};
  }
}

}  // namespace tavril::cli
