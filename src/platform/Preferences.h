#pragma once

#include <QString>

#include <optional>

namespace tavril {

/// The user's choices for this run and later ones, as texts by key. If one cannot be read or saved, this is
/// logged, and the program goes on without it.
class Preferences {
 public:
  virtual ~Preferences() = default;

  virtual std::optional<QString> value(const QString &key) const = 0;
  /// False if it could not be saved.
  virtual bool setValue(const QString &key, const QString &value) = 0;
  /// False if it could not be removed.
  virtual bool remove(const QString &key) = 0;
};

}  // namespace tavril
