#pragma once

#include "platform/KeyedText.h"

#include <QHash>
#include <QString>
#include <QStringView>

namespace tavril {

class ScreenElement;
class StringTable;

/// Screen elements by key, and which texts they were given.
class ValueStore {
 public:
  void set(const QString &key, ScreenElement &element) { elements_[key] = &element; }
  void remove(const QString &key) { elements_.remove(key); }

  /// The element under the key, or nothing.
  ScreenElement *find(QStringView key) const;
  /// The element under the key; where there is none, one that shows nothing and keeps nothing.
  ScreenElement &element(QStringView key) const;

  /// Sets the text of the element and remembers it. All texts that a string table has a part in go this way.
  void show(QStringView key, const KeyedText &text, const StringTable &strings);
  /// What show() was last given for this element.
  KeyedText shown(QStringView key) const { return texts_.value(key.toString()); }
  /// Puts all remembered texts into another language.
  void showAgain(const StringTable &strings) const;

 private:
  QHash<QString, ScreenElement *> elements_;
  QHash<QString, KeyedText> texts_;
};

}  // namespace tavril
