#pragma once

#include "protocol/Frames.h"

#include <QByteArray>

namespace tavril::cli {

/// One command to the bridge. Values are range-checked before they get here.
struct Command {
  CommandCode code = CommandCode::InitServo;
  QByteArray parameters;

  static Command detect() { return {CommandCode::InitServo, {}}; }
  static Command readRegister(int number);
  static Command writeRegister(int number, int value);
  static Command setPosition(int position);
  static Command readPosition() { return {CommandCode::ReadServoPosition, {}}; }

  /// The frame alone, without padding.
  QByteArray frame() const;
  /// As it goes over the wire: the frame filled up with zeros.
  QByteArray transmission() const;
  /// What its reply names besides the code, for the commands whose reply names a register; 0 for the others.
  int registerNumber() const;
  /// Whether a reply to the one also passes for a reply to the other.
  bool sharesRepliesWith(const Command &other) const;
};

}  // namespace tavril::cli
