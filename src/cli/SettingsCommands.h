#pragma once

#include "cli/SettingsFile.h"

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
/// Writes those settings that differ, the servo ID last, and reads each back.
void restore(Session &session, const Settings &wanted, bool dryRun);
/// Compares what is in the file with the servo.
void diffWithServo(Session &session, const NamedSettings &file);
/// A table of the settings that differ. Throws a Failure of the kind BadValue when there are any.
void showDifferences(Console &console, const NamedSettings &one, const NamedSettings &other);

}  // namespace tavril::cli
