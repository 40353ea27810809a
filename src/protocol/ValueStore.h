#pragma once

#include <QHash>
#include <QString>
#include <QStringView>

namespace tavril {

class ScreenElement;

/// Screen elements by key. Owns none of them. Main thread only.
class ValueStore {
 public:
  void set(const QString &key, ScreenElement &element) { elements_[key] = &element; }
  void remove(const QString &key) { elements_.remove(key); }

  /// The element under the key, or nothing.
  ScreenElement *find(QStringView key) const;
  /// The element under the key; where there is none, one that shows nothing and keeps nothing.
  ScreenElement &element(QStringView key) const;

 private:
  QHash<QString, ScreenElement *> elements_;
};

}  // namespace tavril
