#pragma once

#include <QString>
#include <QStringList>

#include <optional>

namespace tavril {

/// Keys and values, line by line, as a string table: "key"="value"; on each line. Time and memory are linear
/// in what goes in.
struct LinePairing {
  QString table;
  /// The first line, from 0, whose key has no value. There is no table then.
  std::optional<qsizetype> missing;

  /// Kept: C100.
  static LinePairing of(const QStringList &keyArray, const QStringList &valueArray);
};

}  // namespace tavril
