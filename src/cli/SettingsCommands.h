#pragma once

#include "cli/RegisterCommands.h"
#include "cli/SettingsFile.h"
#include "servo/Changes.h"

#include <QString>

#include <vector>

namespace tavril::cli {

class Console;
struct Session;

/// Settings, and what to call where they come from.
struct NamedSettings {
  QString name;
  Settings settings;
};

/// The commands; each throws a Failure when it fails.
void dump(Session &session, const QString &file, bool mayReplace);
/// Writes those settings that differ and reads each back.
void restore(Session &session, const Settings &wanted, const WriteMode &mode);
/// Compares what is in the file with the servo.
void diffWithServo(Session &session, const NamedSettings &file, bool json);
/// A table of the settings that differ. Throws a Failure of the kind Different when there are any.
void showDifferences(Console &console, const NamedSettings &one, const NamedSettings &other, bool json);

/// Asks before what may hurt, makes the changes, and prints them; for `write` and `restore`. Throws a Failure
/// that says of each change what has become of it.
void makeChanges(Session &session, std::vector<servo::Change> changes, const WriteMode &mode);
/// What the servo holds in these registers.
Settings readValues(Session &session, const std::vector<int> &numbers);
/// The same for the settings that are to be written; a Failure says of each that it is not changed.
Settings readBeforeWriting(Session &session, const std::vector<int> &numbers, const WriteMode &mode);
/// Throws a Failure for values that may hurt, or with `force` only says so.
void judge(Console &console, const Settings &wanted, const Settings &present, bool force);

}  // namespace tavril::cli
