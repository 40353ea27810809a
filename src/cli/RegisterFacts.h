#pragma once

#include "protocol/RegisterCatalogue.h"

#include <QString>
#include <QStringList>

#include <optional>
#include <vector>

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

/// Where the servo's positions lie, and how many of them make a degree.
inline constexpr ValueRange positionRange{0, 1023};
inline constexpr double positionsPerDegree = 3.41;

/// How people spell the key "max_tempertaure"; understood wherever keys are.
inline const QString maxTemperatureForPeople = QStringLiteral("max_temperature");

/// The register with this number or name key, in capitals or not; "max_temperature" is understood as well as
/// the key, which is spelt otherwise. Nothing for any other text.
const RegisterRow *registerNamed(const QString &text);
/// The one of these names that the text is most like, if it is like any; empty otherwise.
QString nearestOf(const QString &text, const QStringList &names);
/// " Did you mean kp?" for a text that is nearly the key of a register; empty otherwise.
QString suggestionFor(const QString &text);
/// What to say of a text that names no register: the nearest name, if one is near, and all those known.
QString unknownRegisterText(const QString &text);

/// The key of the register with this number, which must be one.
QString keyOf(int number);

/// The torque policy, on which the meaning of register 17 depends.
inline constexpr int torquePolicyRegister = 4;

/// The range of a setting: the editor's, or that of the listed choices. The row must be a setting's.
ValueRange settingRange(const RegisterRow &row);
/// What one step of the register stands for, as files of settings have it; empty where the servo's own units
/// are all that is known.
QString unitOf(const RegisterRow &row);
/// What the register is for, in a few words.
QString purposeOf(const RegisterRow &row);
/// The unit in which people give the value, such as "ms"; empty where none is known.
QString scaledUnitOf(const RegisterRow &row);
/// The value in that unit; nothing where none is known.
std::optional<double> scaledValue(const RegisterRow &row, int value);
/// The value of the register from the two bytes that came.
int registerValue(const RegisterRow &row, int highByte, int lowByte);

/// The value of a setting as it was typed: a whole number, or where the unit is known a number with its unit.
/// Throws a Failure for what is no such number, and for one out of range.
int settingFrom(const RegisterRow &row, const QString &typed);

/// What the value of a setting says in words; empty where the number says it all.
QString settingMeaning(const RegisterRow &row, int value);
/// The same for any register, in one line; empty where the number says it all. What one detail bit means
/// depends on the torque policy; both meanings are given where that is not known.
QString meaningOf(const RegisterRow &row, int value, std::optional<int> torquePolicy,
                  const StringTable &strings);

/// The register as every command prints it as JSON: number, value, scaled value with its unit, meaning.
QString registerJson(const RegisterRow &row, int value, const QString &meaning);

/// A line of a list of all registers: "over_load", "check period of the load error", "ms", "0 to 255".
struct RegisterSummary {
  const RegisterRow *row;
  QString key;
  QString purpose;
  QString unit;   ///< "10 ms", or "-"
  QString range;  ///< "0 to 255", or "read only"
  QStringList choices;
};
std::vector<RegisterSummary> registerSummaries();

}  // namespace tavril::cli
