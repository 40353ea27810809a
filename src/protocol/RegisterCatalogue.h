#pragma once

#include "wire/Registers.h"

#include <QString>
#include <QStringView>

#include <span>

namespace tavril {

/// A register as the screen knows it: the keys of its row in the table of registers. An empty key: none.
struct RegisterRow {
  int number = 0;
  QStringView helpKey;   ///< entry of the help tables
  QStringView valueKey;  ///< the screen element that shows the value
  QStringView entryKey;  ///< where the text last read from the servo is kept
  QStringView nameKey;   ///< short name, and key of the caption
  wire::ReplyValue reply = wire::ReplyValue::Byte;

  constexpr bool isSetting() const { return !helpKey.isEmpty(); }
  QString toolTipKey() const;  ///< empty for the status registers
  QString noticeKey() const;
};

/// All registers in order; the row at index i is register i + 1.
std::span<const RegisterRow, wire::registerCount> registerCatalogue();
/// Those that can be written.
std::span<const RegisterRow, wire::settingCount> settingRegisters();
/// The row of a register, or nothing.
const RegisterRow *findRegister(int number);

}  // namespace tavril
