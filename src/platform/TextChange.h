#pragma once

#include <QString>
#include <QStringList>
#include <QStringView>

#include <optional>

namespace tavril {

class StringTable;

/// Posted when the language has changed. Observers look their texts up again. The user info has a TextChange
/// under `textChangeKey`, which is valid until post() returns.
inline constexpr char16_t LanguageDidChangeNotification[] = u"LanguageDidChange";
inline constexpr char16_t textChangeKey[] = u"textChange";

/// From one string table to another: what a text that is shown already reads in the new one. Each method is
/// told which keys may have given the text; of several that fit, the one with the longest text counts. What
/// fits none, an empty text included, stays as it is. Owns neither table.
class TextChange {
 public:
  TextChange(const StringTable &before, const StringTable &now) : before_(&before), now_(&now) {}

  /// For a text that is a key's text and nothing else.
  QString whole(const QString &text, const QStringList &keys) const;
  /// For a text that begins with a key's text; what follows is kept.
  QString beginning(const QString &text, const QStringList &keys) const;
  /// For a text with lines "1. " and so on, each of which goes on with a key's text to the end of a line.
  QString numbered(const QString &text, const QStringList &keys) const;

  /// The key whose text, of `keys`, this text begins with; nothing if there is none.
  std::optional<QString> keyAtBeginning(const QString &text, const QStringList &keys) const;

 private:
  enum class Until { Anything, LineEnd, TextEnd };
  std::optional<QString> find(QStringView text, const QStringList &keys, Until until) const;
  QString replaced(const QString &text, const std::optional<QString> &key) const;

  const StringTable *before_;
  const StringTable *now_;
};

}  // namespace tavril
