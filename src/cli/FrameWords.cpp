#include "cli/FrameWords.h"

#include "cli/Command.h"
#include "cli/RegisterFacts.h"

#include <QStringList>

namespace tavril::cli {

namespace {

int byteAt(const QByteArray &bytes, qsizetype index) {
  return static_cast<unsigned char>(bytes[index]);
}

int wordAt(const QByteArray &bytes, qsizetype index) {
  return byteAt(bytes, index) * 256 + byteAt(bytes, index + 1);
}

QString nameOf(int number) {
  const RegisterRow *row = findRegister(number);
  return row ? row->nameKey.toString() : QStringLiteral("register %1").arg(number);
}

int valueOf(int number, int high, int low) {
  const RegisterRow *row = findRegister(number);
  return row ? registerValue(*row, high, low) : high * 256 + low;
}

QString detectionInWords(int result) {
  switch (result) {
    case 0:
      return QStringLiteral("no servo");
    case 1:
      return QStringLiteral("one servo");
    default:
      return QStringLiteral("several servos");
  }
}

constexpr auto firstData = static_cast<qsizetype>(FrameByte::firstParameter);

}  // namespace

QString inHex(const QByteArray &bytes) {
  return QString::fromLatin1(bytes.toHex(' ')).toUpper();
}

QString commandInWords(const Command &command) {
  const QByteArray &data = command.parameters;
  switch (command.code) {
    case CommandCode::InitServo:
      return QStringLiteral("detect the servo");
    case CommandCode::ReadServoSettingValue:
      return QStringLiteral("read %1").arg(nameOf(byteAt(data, 0)));
    case CommandCode::WriteServoSettingValue: {
      const int number = byteAt(data, 0);
      return QStringLiteral("write %1 to %2")
          .arg(valueOf(number, byteAt(data, 1), byteAt(data, 2)))
          .arg(nameOf(number));
    }
    case CommandCode::ReleaseServo:
      return QStringLiteral("release the servo");
    case CommandCode::RebootServo:
      return QStringLiteral("reboot");
    case CommandCode::ResetServo:
      return QStringLiteral("restore the factory settings");
    case CommandCode::SetServoPosition:
      return QStringLiteral("go to position %1").arg(wordAt(data, 0));
    case CommandCode::ReadServoPosition:
      return QStringLiteral("read the position");
    case CommandCode::ErrorMessage:
      break;
  }
  return QStringLiteral("report of error %1").arg(byteAt(data, 0));
}

QString replyInWords(const QByteArray &reply) {
  const int first = reply.size() > firstData ? byteAt(reply, firstData) : 0;
  switch (static_cast<CommandCode>(byteAt(reply, static_cast<qsizetype>(FrameByte::code)))) {
    case CommandCode::InitServo:
      return detectionInWords(first);
    case CommandCode::ReadServoSettingValue:
      return QStringLiteral("%1 is %2")
          .arg(nameOf(first))
          .arg(valueOf(first, byteAt(reply, firstData + 1), byteAt(reply, firstData + 2)));
    case CommandCode::WriteServoSettingValue:
      return QStringLiteral("%1 written").arg(nameOf(first));
    case CommandCode::ReleaseServo:
      return QStringLiteral("released");
    case CommandCode::RebootServo:
      return QStringLiteral("rebooted");
    case CommandCode::ResetServo:
      return QStringLiteral("factory settings restored");
    case CommandCode::SetServoPosition:
      return QStringLiteral("position taken");
    case CommandCode::ReadServoPosition:
      return QStringLiteral("position is %1").arg(wordAt(reply, firstData));
    case CommandCode::ErrorMessage:
      break;
  }
  return errorInWords(first);
}

QString errorInWords(int error) {
  switch (error) {
    case 0:
      return QStringLiteral("unknown command (error 0)");
    case 1:
      return QStringLiteral("the command came too slowly (error 1)");
    case 2:
      return QStringLiteral("wrong frame length (error 2)");
    case 3:
      return QStringLiteral("value out of range (error 3)");
    case 4:
      return QStringLiteral("the bridge has lost the servo (error 4)");
    default:
      return QStringLiteral("unknown error %1").arg(error);
  }
}

}  // namespace tavril::cli
