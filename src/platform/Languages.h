#pragma once

#include <QString>
#include <QStringList>

namespace tavril {

class StringTable;

/// Posted when the language has changed. Observers look their texts up again.
inline constexpr char16_t LanguageDidChangeNotification[] = u"LanguageDidChange";

/// The available string tables, and the one in use.
class Languages {
 public:
  virtual ~Languages() = default;

  /// The codes of all languages that have a table, such as "en" and "zh-Hant", in order.
  virtual QStringList languages() const = 0;
  /// The one in use.
  virtual QString language() const = 0;
  /// False if there is no table for this language; nothing changes then.
  virtual bool setLanguage(const QString &language) = 0;

  /// The texts of one language, in use or not. Without a table, each key is its own text.
  virtual const StringTable &table(const QString &language) const = 0;
  /// The best language for a user who reads `wanted`, the preferred one first; English if none fits.
  virtual QString bestFor(const QStringList &wanted) const = 0;
};

}  // namespace tavril
