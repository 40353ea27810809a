#pragma once

#include "platform/StringTable.h"

#include <QHash>

#include <utility>

namespace tavril {

/// Shows "[key]" for every key but those that were given a text, so that a test sees which key was looked up.
class KeyTable final : public StringTable {
 public:
  explicit KeyTable(QHash<QString, QString> given = {}) : texts(std::move(given)) {}

  QString text(QStringView key) const override {
    const QString name = key.toString();
    return texts.value(name, u'[' + name + u']');
  }

  QHash<QString, QString> texts;
};

}  // namespace tavril
