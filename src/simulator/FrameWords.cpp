#include "simulator/FrameWords.h"

#include <QStringList>

#include <QLatin1Char>
#include <algorithm>

namespace tavril::simulator {
namespace {

int word(const Bytes &frame, std::size_t at) {
  return frame[at] * 256 + frame[at + 1];
}

/// The row whose code the frame has, if the command is known.
const wire::CommandRow *rowOf(const Bytes &frame) {
  const auto row = std::find_if(wire::commands.begin(), wire::commands.end(),
                                [&](const wire::CommandRow &r) { return r.code == frame[2]; });
  return row == wire::commands.end() ? nullptr : &*row;
}

QString errorInWords(std::uint8_t code) {
  switch (static_cast<wire::Error>(code)) {
    case wire::Error::UnknownCommand:
      return QStringLiteral("unknown command");
    case wire::Error::TimedOut:
      return QStringLiteral("packet timed out");
    case wire::Error::WrongLength:
      return QStringLiteral("wrong packet length");
    case wire::Error::OverRange:
      return QStringLiteral("value over range");
    case wire::Error::LostServo:
      return QStringLiteral("servo lost");
  }
  return QStringLiteral("no known error");
}

QString detectionInWords(std::uint8_t count) {
  switch (count) {
    case 0:
      return QStringLiteral("no servo");
    case 1:
      return QStringLiteral("one servo");
    default:
      return QStringLiteral("more than one servo");
  }
}

}  // namespace

QString inHex(std::span<const std::uint8_t> bytes) {
  QStringList parts;
  parts.reserve(static_cast<qsizetype>(bytes.size()));
  for (const std::uint8_t byte : bytes) {
    parts += QStringLiteral("%1").arg(byte, 2, 16, QLatin1Char('0')).toUpper();
  }
  return parts.join(u' ');
}

QString commandInWords(const Bytes &frame) {
  const wire::CommandRow *row = rowOf(frame);
  if (!row) return QStringLiteral("unknown command");
  if (row->length != frame.size()) return QStringLiteral("wrong length, %1 expected").arg(row->length);
  switch (row->code) {
    case wire::detect:
      return QStringLiteral("detect the servo");
    case wire::readRegister:
      return QStringLiteral("read register %1").arg(frame[3]);
    case wire::writeRegister:
      return QStringLiteral("write %2 to register %1").arg(frame[3]).arg(word(frame, 4));
    case wire::release:
      return QStringLiteral("release the motor");
    case wire::reboot:
      return QStringLiteral("reboot");
    case wire::factoryReset:
      return QStringLiteral("factory reset");
    case wire::setPosition:
      return QStringLiteral("set position %1").arg(word(frame, 3));
    case wire::readPosition:
      return QStringLiteral("read position");
    default:
      return QStringLiteral("error report request %1").arg(frame[3]);
  }
}

QString replyInWords(const Bytes &frame) {
  switch (frame[2]) {
    case wire::detect:
      return detectionInWords(frame[3]);
    case wire::readRegister:
      return QStringLiteral("register %1 is %2").arg(frame[3]).arg(word(frame, 4));
    case wire::writeRegister:
      return QStringLiteral("register %1 written").arg(frame[3]);
    case wire::release:
      return QStringLiteral("released");
    case wire::reboot:
      return QStringLiteral("rebooted");
    case wire::factoryReset:
      return QStringLiteral("factory values restored");
    case wire::setPosition:
      return QStringLiteral("position set");
    case wire::readPosition:
      return QStringLiteral("position is %1").arg(word(frame, 3));
    default:
      return QStringLiteral("error report %1: %2").arg(frame[3]).arg(errorInWords(frame[3]));
  }
}

}  // namespace tavril::simulator
