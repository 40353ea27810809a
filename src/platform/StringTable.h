#pragma once

#include <QString>
#include <QStringView>

namespace tavril {

/// The texts of one language, looked up by key. Main thread only.
class StringTable {
 public:
  virtual ~StringTable() = default;

  /// The text under the key; a missing key shows itself.
  virtual QString text(QStringView key) const = 0;
};

}  // namespace tavril
