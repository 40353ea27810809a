#pragma once

#include <QString>

#include <optional>

namespace tavril {

/// What the user has chosen for this and all later runs, as texts by key. What cannot be read or kept is
/// logged, and the program does without. Main thread only.
class Preferences {
 public:
  virtual ~Preferences() = default;

  virtual std::optional<QString> value(const QString &key) const = 0;
  /// False when it could not be kept.
  virtual bool setValue(const QString &key, const QString &value) = 0;
  /// False when it is still there.
  virtual bool remove(const QString &key) = 0;
};

}  // namespace tavril
