#pragma once

#include "wire/Registers.h"

#include <QString>
#include <QStringList>

#include <optional>

namespace tavril {
class StringTable;
}

namespace tavril::cli {

/// The register with this number or name key, in capitals or not. Nothing for any other text.
const wire::Register *registerNamed(const QString &text);
/// The one of these names that the text is most like, if it is like any; empty otherwise.
QString nearestOf(const QString &text, const QStringList &names);
/// " Did you mean kp?" for a text that is nearly the key of a register; empty otherwise.
QString suggestionFor(const QString &text);
/// What to say of a text that names no register: the nearest name, if one is near, and all those known.
QString unknownRegisterText(const QString &text);

QString keyOf(const wire::Register &row);
/// The key of the register with this number, which must be one.
QString keyOf(int number);

/// "0 to 255"
QString textOf(const wire::Range &range);
/// The same for a setting; "read only" for what the servo measures.
QString rangeText(const wire::Register &row);
/// What one step of the register stands for, as files of settings have it; empty where the servo's own units
/// are all that is known.
QString unitOf(const wire::Register &row);
QStringList choicesOf(const wire::Register &row);

/// The value of a setting as it was typed: a whole number, or where the unit is known a number with its unit.
/// Throws a Failure for what is no such number, and for one out of range.
int settingFrom(const wire::Register &row, const QString &typed);

/// What the value of a setting says in words; empty where the number says it all.
QString settingMeaning(const wire::Register &row, int value);
/// The same for any register, in one line; empty where the number says it all. What one detail bit means
/// depends on the torque policy; both meanings are given where that is not known.
QString meaningOf(const wire::Register &row, int value, std::optional<int> torquePolicy,
                  const StringTable &strings);

/// The register as every command prints it as JSON: number, value, scaled value with its unit, meaning.
QString registerJson(const wire::Register &row, int value, const QString &meaning);

}  // namespace tavril::cli
