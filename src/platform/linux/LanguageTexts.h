#pragma once

#include "platform/StringTable.h"

#include <QHash>
#include <QString>
#include <QStringView>

namespace tavril {

/// The texts of one language in memory.
class LanguageTexts final : public StringTable {
 public:
  /// Adds texts; those of keys that are there already replace what they had.
  void add(const QHash<QString, QString> &texts) { texts_.insert(texts); }

  QString text(QStringView key) const override;

 private:
  QHash<QString, QString> texts_;
};

}  // namespace tavril
