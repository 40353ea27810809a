#pragma once

#include <QString>
#include <QStringView>

namespace tavril {

/// The texts of one language, looked up by key.
class StringTable {
 public:
  virtual ~StringTable() = default;

  /// The text of the key, or the key itself if it has none.
  virtual QString text(QStringView key) const = 0;
};

}  // namespace tavril
