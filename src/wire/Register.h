#pragma once

#include "wire/Range.h"

#include <cstdint>
#include <span>
#include <string_view>

namespace tavril::wire {

/// How a register's value stands in the reply that carries it, and how it is shown.
enum class ReplyValue {
  Byte,        ///< the low byte
  Word,        ///< both bytes, unsigned
  SignedByte,  ///< the low byte, two's complement
  ErrorBits,   ///< the low byte as a list of errors
  DetailBits,  ///< the low byte as a list of details
};

/// Settings are written in this order. The limits that become wider come before those that become narrower,
/// and with another reply policy the servo may stop answering.
enum class WriteStage {
  Limit,
  CheckPeriod,
  Gain,
  Calibration,
  TorquePolicy,
  LedPolicy,
  ServoId,
  ReplyPolicy
};

/// What a value counts. Empty where only the servo knows.
struct Unit {
  std::u16string_view step;   ///< one step of the register: "10 ms"
  std::u16string_view name;   ///< in which people give the value: "ms"
  double stepsPerUnit = 0.0;  ///< 0: no unit is known
};

using Choices = std::span<const std::u16string_view>;

/// Under which names the rest of the program knows a register. Empty: none.
struct Keys {
  std::u16string_view name;          ///< short name, and key of the caption
  std::u16string_view value;         ///< the screen element that shows the value
  std::u16string_view help{};        ///< entry of the help tables; settings have one
  std::u16string_view entry{};       ///< where the text last read from the servo is kept
  std::u16string_view identifier{};  ///< of the field in which a value is typed
};

/// All that is known of one register of the servo.
struct Register {
  int number;
  Keys keys;
  std::u16string_view correctName{};  ///< the name spelt correctly, where it is not
  std::u16string_view label{};  ///< the label that shows the caption, where it is not called as the name
  ReplyValue reply = ReplyValue::Byte;
  Range range{};                         ///< of a setting
  Unit unit{};                           ///< the servo's own if empty
  Choices choices{};                     ///< what each value means, if the values are choices
  WriteStage stage = WriteStage::Limit;  ///< of a setting
  int limited = 0;                       ///< the register whose value a limit limits
  bool isLowest = false;                 ///< the limit is a minimum
  std::u16string_view meaning;

  constexpr bool isSetting() const { return !keys.help.empty(); }
  constexpr bool isBitList() const {
    return reply == ReplyValue::ErrorBits || reply == ReplyValue::DetailBits;
  }
  constexpr bool isPeriod() const { return unit.name == u"ms"; }
};

/// The number of two bytes.
constexpr int wordOf(int high, int low) {
  return high * 256 + low;
}

/// The register's value from the two bytes of a reply.
constexpr int valueOf(const Register &row, int high, int low) {
  switch (row.reply) {
    case ReplyValue::Word:
      return wordOf(high, low);
    case ReplyValue::SignedByte:
      return static_cast<std::int8_t>(low & 0xFF);
    default:
      return low;
  }
}

}  // namespace tavril::wire
