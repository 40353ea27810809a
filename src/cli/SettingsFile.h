#pragma once

#include "records/ServoSettings.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril::cli {

using records::Settings;

/// "3:7: settings.kp: 40000 is out of range (0 to 32766)"
QStringList linesOf(const std::vector<records::SettingsFinding> &findings);

/// What a file held, and remarks about it, a line each.
struct LoadedSettings {
  Settings settings;
  QStringList remarks;
};

/// The settings in the file, or in the standard input for "-"; throws a Failure that lists all problems, a
/// line each.
LoadedSettings loadSettings(const QString &path);

}  // namespace tavril::cli
