#pragma once

#include <QString>
#include <QStringView>

#include <array>
#include <span>

namespace tavril {

/// How a register's value stands in the reply that carries it, and how it is shown.
enum class ReplyValue {
  Byte,        ///< the low byte
  Word,        ///< both bytes, unsigned
  SignedByte,  ///< the low byte, two's complement
  ErrorBits,   ///< the low byte as a list of errors
  DetailBits,  ///< the low byte as a list of details
};

/// One register of the servo with the keys under which the rest of the program knows it. An empty key: none.
struct RegisterRow {
  int number;
  QStringView helpKey;   ///< entry of the help tables
  QStringView valueKey;  ///< the screen element that shows the value
  QStringView entryKey;  ///< where the text last read from the servo is kept
  QStringView nameKey;   ///< short name, and key of the caption
  ReplyValue reply;

  constexpr bool isSetting() const { return !helpKey.isEmpty(); }
  QString toolTipKey() const;  ///< empty for the status registers
  QString noticeKey() const;
};

inline constexpr int settingCount = 15;
inline constexpr int registerCount = 20;

/// All registers in order; the row at index i is register i + 1.
std::span<const RegisterRow, registerCount> registerCatalogue();
/// Registers 1 to 15, which can be written.
std::span<const RegisterRow, settingCount> settingRegisters();
/// The row of a register, or nothing for a number outside 1 to 20.
const RegisterRow *findRegister(int number);

}  // namespace tavril
