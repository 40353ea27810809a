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
  bool onlyRanges = false;  ///< there are problems, and all are values out of range
};

/// Checks a whole document: syntax, keys, types, ranges. Each problem is named with its line and column.
CheckedSettings checkSettings(const QByteArray &document);

/// The settings in the file; throws a Failure that lists all its problems, a line each.
Settings loadSettings(const QString &path);

/// Writes the file at one stroke. Throws a Failure when that fails, or when the file is there and may not be
/// replaced. A symbolic link counts as a file that is there; what it leads to is what is replaced.
void saveFile(const QString &path, const QByteArray &content, bool mayReplace);
/// Throws the Failure that saveFile() would for a file that is there; before the work is begun.
void expectNewFile(const QString &path, bool mayReplace);

}  // namespace tavril::cli
