#pragma once

#include <QList>
#include <QString>
#include <QStringView>

namespace tavril {

class StringTable;

/// A text as what it is, so that it can be shown in any language at any time: texts of a string table by
/// their keys, and words that are the same in every language, one after the other.
class KeyedText {
 public:
  /// An empty text.
  KeyedText() = default;
  /// The text under the key.
  explicit KeyedText(QStringView key) : parts_{{key.toString(), true}} {}
  /// Words that are the same in every language, such as the name of a port.
  static KeyedText words(const QString &words);

  KeyedText &operator+=(const KeyedText &rest);
  KeyedText operator+(const KeyedText &rest) const { return KeyedText(*this) += rest; }
  bool operator==(const KeyedText &) const = default;

  bool isEmpty() const { return parts_.isEmpty(); }
  QString in(const StringTable &strings) const;

 private:
  struct Part {
    QString text;
    bool isKey = false;
    bool operator==(const Part &) const = default;
  };

  QList<Part> parts_;
};

}  // namespace tavril
