#include "cli/SendCommand.h"

#include "cli/ChangeWords.h"
#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/FrameWords.h"
#include "cli/ProblemWords.h"
#include "cli/RegisterFacts.h"
#include "cli/Session.h"
#include "platform/Bytes.h"
#include "platform/JsonText.h"
#include "servo/Servo.h"
#include "wire/Frames.h"

#include <QByteArray>
#include <QChar>
#include <QString>

#include <algorithm>
#include <cstdint>
#include <variant>

namespace tavril::cli {

using wire::CommandCode;

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

void checkValue(int number, const wire::Range &range, const QString &name) {
  if (range.contains(number)) return;
  throw Failure{ExitCode::BadValue,
                QStringLiteral("%1: %2 is out of range (%3).").arg(name).arg(number).arg(textOf(range))};
}

void checkParameters(const wire::Command &command) {
  const int word = command.word();
  if (command.code == CommandCode::SetServoPosition)
    checkValue(word, wire::positionRange, QStringLiteral("position"));
  const int number = command.registerNumber();
  if (command.code != CommandCode::ReadServoSettingValue &&
      command.code != CommandCode::WriteServoSettingValue)
    return;
  const wire::Register *row = wire::findRegister(number);
  if (!row) {
    refuse(QStringLiteral("there is no register %1; they go from 1 to %2.")
               .arg(number)
               .arg(wire::registerCount));
  }
  if (command.code == CommandCode::ReadServoSettingValue) return;
  if (!row->isSetting())
    refuse(QStringLiteral("%1 is measured by the servo and cannot be written.").arg(keyOf(*row)));
  // The sixteen bits as the servo takes them: only where negative values are allowed do they have a sign.
  const int value = row->range.minimum < 0 ? static_cast<std::int16_t>(word) : word;
  checkValue(value, row->range, keyOf(*row));
}

[[noreturn]] void refuse(wire::CommandProblem problem, wire::Bytes bytes) {
  using wire::CommandProblem;
  const auto size = static_cast<qsizetype>(bytes.size());
  switch (problem) {
    case CommandProblem::TooShort:
      refuse(QStringLiteral("%1 cannot be a whole frame.").arg(counted(size, "byte", "bytes")));
    case CommandProblem::StartMark:
      refuse(QStringLiteral("it must begin with FF."));
    case CommandProblem::EndMark:
      refuse(QStringLiteral("it must end with FE."));
    case CommandProblem::LengthByte:
      refuse(QStringLiteral("the second byte says %1, but there are %2.")
                 .arg(counted(bytes[wire::FrameByte::length], "byte", "bytes"))
                 .arg(size));
    case CommandProblem::Code:
    case CommandProblem::LengthOfCode:
      break;
  }
  const QString code = inHex(bytes.subspan(wire::FrameByte::code, 1));
  if (problem == CommandProblem::Code)
    refuse(QStringLiteral("there is no command with the code %1.").arg(code));
  const wire::FrameRow *row = wire::findFrameRow(*wire::codeIn(bytes));
  refuse(QStringLiteral("a command of code %1 has %2 bytes, not %3.").arg(code).arg(row->length()).arg(size));
}

}  // namespace

wire::Command commandFromHex(const QStringList &texts) {
  const QByteArray bytes = bytesFrom(texts);
  const auto found = wire::commandFrom(asBytes(bytes));
  if (const auto *problem = std::get_if<wire::CommandProblem>(&found)) refuse(*problem, asBytes(bytes));
  const auto &command = std::get<wire::Command>(found);
  checkParameters(command);
  return command;
}

void expectConfirmed(const wire::Command &command, bool isConfirmed) {
  if (isConfirmed) return;
  if (command.code == CommandCode::WriteServoSettingValue) {
    const QStringList dangers = dangersInWords({{command.registerNumber(), command.word()}}, {});
    if (dangers.isEmpty()) return;
    throw Failure{ExitCode::BadValue,
                  dangers.join(u'\n') + QStringLiteral("\nNothing was sent. Confirm with --yes.")};
  }
  if (command.code != CommandCode::RebootServo && command.code != CommandCode::ResetServo) return;
  throw Failure{ExitCode::Usage,
                QStringLiteral("this is the frame to %1. Confirm with --yes.").arg(commandInWords(command))};
}

void sendCommand(Session &session, const wire::Command &command, bool json) {
  const wire::Reply reply = session.expect(session.servo.send(command));
  session.console.data(json ? QStringLiteral("{\"port\": %1, \"sent\": %2, \"reply\": %3, \"meaning\": %4}\n")
                                  .arg(jsonText(session.portName), jsonText(inHex(command)),
                                       jsonText(inHex(reply.frame)), jsonText(replyInWords(reply)))
                            : QStringLiteral("%1  %2\n").arg(inHex(reply.frame), replyInWords(reply)));
  if (reply.code() == CommandCode::ErrorMessage && command.code != CommandCode::ErrorMessage) {
    throw Failure{exitCodeOf(reply.error()), QStringLiteral("the bridge answered \"%1\" with: %2.")
                                                 .arg(commandInWords(command), replyInWords(reply))};
  }
}

}  // namespace tavril::cli
