#pragma once

#include "platform/StringTable.h"

#include <QHash>
#include <QMap>
#include <QStringList>

namespace tavril {

class Log;

/// The string tables of all languages, read once from files named after their language ("zh-Hant.strings") in
/// one or more folders. Also read is "zh-Hant.h", which is how the strings converter names its tables. A text
/// that the current language lacks is shown by its key.
class StringTables final : public StringTable {
 public:
  /// `folders` in order of increasing precedence: later ones win key by key. What is wrong with a file goes
  /// to the log. The current language is "en".
  StringTables(const QStringList &folders, Log &log);

  /// The folder that came with the program, in the build tree or installed, then the user's own.
  static QStringList standardFolders();

  /// The best of the available languages for a user who reads `wanted`, the preferred first ("zh-TW",
  /// "de_DE").
  static QString languageFor(const QStringList &wanted, const QStringList &available);

  QStringList languages() const { return tables_.keys(); }
  QString language() const { return language_; }
  /// False, and nothing changes, when there is no table for this language.
  bool setLanguage(const QString &language);

  QString text(QStringView key) const override;

 private:
  using Texts = QHash<QString, QString>;

  void readFolder(const QString &folder, const QString &suffix, Log &log);

  QMap<QString, Texts> tables_;
  QString language_ = QStringLiteral("en");
};

}  // namespace tavril
