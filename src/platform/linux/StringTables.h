#pragma once

#include "platform/Languages.h"
#include "platform/StringTable.h"

#include <QHash>
#include <QString>
#include <QStringList>
#include <QStringView>

#include <map>

namespace tavril {

class Log;

/// The texts of one language in memory.
class LanguageTexts final : public StringTable {
 public:
  /// Adds texts; those of keys that are there already replace what they had.
  void add(const QHash<QString, QString> &texts) { texts_.insert(texts); }

  QString text(QStringView key) const override;

 private:
  QHash<QString, QString> texts_;
};

/// The string tables of all languages, read once from files named after their language ("zh-Hant.strings") in
/// one or more folders. Also read is "zh-Hant.h", which is how the strings converter names its tables. A text
/// that the current language lacks is shown by its key.
class StringTables final : public StringTable, public Languages {
 public:
  /// `folders` in order of increasing precedence: later ones win key by key. What is wrong with a file goes
  /// to the log. The current language is "en".
  StringTables(const QStringList &folders, Log &log);

  /// The folder that came with the program, in the build tree or installed, then the user's own.
  static QStringList standardFolders();

  /// The best of the available languages for a user who reads `wanted`, the preferred first ("zh-TW",
  /// "de_DE").
  static QString languageFor(const QStringList &wanted, const QStringList &available);

  QStringList languages() const override;
  QString language() const override { return language_; }
  bool setLanguage(const QString &language) override;
  const StringTable &table(const QString &language) const override;
  QString bestFor(const QStringList &wanted) const override { return languageFor(wanted, languages()); }

  QString text(QStringView key) const override { return table(language_).text(key); }

 private:
  void readFolder(const QString &folder, const QString &suffix, Log &log);

  std::map<QString, LanguageTexts> tables_;
  LanguageTexts none_;
  QString language_ = QStringLiteral("en");
};

}  // namespace tavril
