#pragma once

#include <QByteArray>
#include <QString>
#include <QStringList>

#include <map>

namespace tavril::cli {

/// Values of settings by register number; all fifteen, or some of them.
using Settings = std::map<int, int>;

/// The settings as a JSON document, each with its unit and its range.
QByteArray settingsText(const Settings &settings);

/// What was found in a document.
struct CheckedSettings {
  Settings settings;  ///< nothing unless there are no problems
  QStringList
      problems;  ///< "3:7: settings.kp: 40000 is out of range (0 to 32766)", in the order of the places
  QStringList remarks;      ///< likewise, what is odd and does no harm
  bool onlyRanges = false;  ///< there are problems, and all are values out of range
};

/// Checks a whole document: syntax, keys, types, ranges. Each problem is named with its line and column.
CheckedSettings checkSettings(const QByteArray &document);

/// What a file held, and remarks about it, a line each.
struct LoadedSettings {
  Settings settings;
  QStringList remarks;
};

/// The settings in the file, or in the standard input for "-"; throws a Failure that lists all problems, a
/// line each.
LoadedSettings loadSettings(const QString &path);

}  // namespace tavril::cli
