#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tavril {

/// Combines keys and values, line by line, into a string table: "key"="value"; on each line.
struct LinePairing {
  QString table;
  /// The first line, counted from 0, whose key has no value. If there is one, the table is empty.
  std::optional<qsizetype> missing;

  /// Kept: C100.
  static LinePairing of(const QStringList &keyArray, const QStringList &valueArray);
};

}  // namespace tavril
