#pragma once

#include "protocol/RegisterCatalogue.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tavril {
class StringTable;
}

namespace tavril::cli {

/// Inclusive.
struct ValueRange {
  int minimum = 0;
  int maximum = 0;
  bool contains(int value) const { return value >= minimum && value <= maximum; }
  QString text() const;
};

/// Where the servo's positions lie.
inline constexpr ValueRange positionRange{0, 1023};

/// The register with this number or name key, in capitals or not; "max_temperature" is understood as well as
/// the key, which is spelt otherwise. Nothing for any other text.
const RegisterRow *registerNamed(const QString &text);
/// What to say of a text that names no register: the nearest name, if one is near, and all those known.
QString unknownRegisterText(const QString &text);

/// The range of a setting: the editor's, or that of the listed choices. The row must be a setting's.
ValueRange settingRange(const RegisterRow &row);
/// Empty where the servo's own units are all that is known.
QString unitOf(const RegisterRow &row);
/// The value of the register from the two bytes that came.
int registerValue(const RegisterRow &row, int highByte, int lowByte);

/// What a value says in words, in one line; empty where the number says it all. What one detail bit means
/// depends on the torque policy; both meanings are given where that is not known.
QString meaningOf(const RegisterRow &row, int value, std::optional<int> torquePolicy,
                  const StringTable &strings);

}  // namespace tavril::cli
