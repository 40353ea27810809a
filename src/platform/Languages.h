#pragma once

#include <QString>
#include <QStringList>

namespace tavril {

class StringTable;

/// Posted when all texts have another language; who shows texts looks them up again.
inline constexpr char16_t LanguageDidChangeNotification[] = u"LanguageDidChange";

/// The string tables that there are, and which of them is in use. Main thread only.
class Languages {
 public:
  virtual ~Languages() = default;

  /// The codes of all languages that have a table, such as "en" and "zh-Hant", in order.
  virtual QStringList languages() const = 0;
  /// The one in use.
  virtual QString language() const = 0;
  /// False, and nothing changes, when there is no table for this language.
  virtual bool setLanguage(const QString &language) = 0;

  /// The texts of one language, in use or not. Of a language without a table every key shows itself.
  virtual const StringTable &table(const QString &language) const = 0;
  /// The best of the languages for a user who reads `wanted`, the preferred first; English if none will do.
  virtual QString bestFor(const QStringList &wanted) const = 0;
};

}  // namespace tavril
