#pragma once

#include "platform/Preferences.h"

#include <QMap>

namespace tavril {

/// Preferences that are just a table. Nothing can be kept while `isBroken`.
class MemoryPreferences final : public Preferences {
 public:
  std::optional<QString> value(const QString &key) const override {
    if (!values.contains(key)) return {};
    return values[key];
  }
  bool setValue(const QString &key, const QString &value) override {
    if (!isBroken) values[key] = value;
    return !isBroken;
  }
  bool remove(const QString &key) override {
    if (!isBroken) values.remove(key);
    return !isBroken;
  }

  QMap<QString, QString> values;
  bool isBroken = false;
};

}  // namespace tavril
