#include "cli/FrameWords.h"

#include "cli/RegisterFacts.h"
#include "platform/Bytes.h"
#include "servo/Conversation.h"

#include <chrono>

namespace tavril::cli {

using wire::CommandCode;

namespace {

QString nameOf(int number) {
  const wire::Register *row = wire::findRegister(number);
  return row ? keyOf(*row) : QStringLiteral("register %1").arg(number);
}

/// What a command writes, as the register has it.
int valueIn(const wire::Command &command) {
  const wire::Register *row = wire::findRegister(command.registerNumber());
  return row ? wire::valueOf(*row, command.parameters[1], command.parameters[2]) : command.word();
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

}  // namespace

QString inHex(wire::Bytes bytes) {
  return QString::fromLatin1(toByteArray(bytes).toHex(' ')).toUpper();
}

QString inHex(const wire::Command &command) {
  const wire::CommandBuffer buffer = wire::encode(command);
  return inHex(wire::frameIn(buffer));
}

QString commandInWords(const wire::Command &command) {
  switch (command.code) {
    case CommandCode::InitServo:
      return QStringLiteral("detect the servo");
    case CommandCode::ReadServoSettingValue:
      return QStringLiteral("read %1").arg(nameOf(command.registerNumber()));
    case CommandCode::WriteServoSettingValue:
      return QStringLiteral("write %1 to %2").arg(valueIn(command)).arg(nameOf(command.registerNumber()));
    case CommandCode::ReleaseServo:
      return QStringLiteral("release the servo");
    case CommandCode::RebootServo:
      return QStringLiteral("reboot");
    case CommandCode::ResetServo:
      return QStringLiteral("restore the factory settings");
    case CommandCode::SetServoPosition:
      return QStringLiteral("go to position %1").arg(command.word());
    case CommandCode::ReadServoPosition:
      return QStringLiteral("read the position");
    case CommandCode::ErrorMessage:
      break;
  }
  return QStringLiteral("report of error %1").arg(command.parameters[0]);
}

QString replyInWords(const wire::Reply &reply) {
  switch (reply.code()) {
    case CommandCode::InitServo:
      return detectionInWords(reply.servos());
    case CommandCode::ReadServoSettingValue:
      return QStringLiteral("%1 is %2").arg(nameOf(reply.registerNumber())).arg(reply.value());
    case CommandCode::WriteServoSettingValue:
      return QStringLiteral("%1 written").arg(nameOf(reply.registerNumber()));
    case CommandCode::ReleaseServo:
      return QStringLiteral("released");
    case CommandCode::RebootServo:
      return QStringLiteral("rebooted");
    case CommandCode::ResetServo:
      return QStringLiteral("factory settings restored");
    case CommandCode::SetServoPosition:
      return QStringLiteral("position taken");
    case CommandCode::ReadServoPosition:
      return QStringLiteral("position is %1").arg(reply.position());
    case CommandCode::ErrorMessage:
      break;
  }
  return errorInWords(reply.error());
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

QString eventInWords(const servo::Event &event) {
  using Kind = servo::Event::Kind;
  switch (event.kind) {
    case Kind::Sent:
      return QStringLiteral("-> %1  %2").arg(inHex(event.command), commandInWords(event.command));
    case Kind::Replied:
      return QStringLiteral("<- %1  %2").arg(inHex(event.reply.frame), replyInWords(event.reply));
    case Kind::Late:
      return QStringLiteral("<- %1  %2 (late)").arg(inHex(event.reply.frame), replyInWords(event.reply));
    case Kind::Noise:
      return QStringLiteral("<- %1  noise").arg(inHex(event.bytes));
    case Kind::Invalid:
      return QStringLiteral("<- %1  not a valid reply").arg(inHex(event.bytes));
    case Kind::Silence:
      break;
  }
  return QStringLiteral("   no reply within %1 ms")
      .arg(std::chrono::duration_cast<std::chrono::milliseconds>(event.timeout).count());
}

}  // namespace tavril::cli
