#pragma once

#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <vector>

namespace tavril {

/// What happened to an observed property; the indexes are those of the list entries that came or went.
struct Change {
  enum class Kind { Setting, Insertion, Removal };
  Kind kind = Kind::Setting;
  std::vector<std::size_t> indexes;
};

/// The observers of one object's properties, told on the thread that changed the property, after the change.
/// Thread-safe; an observer may be added or dropped while observers are told.
class KeyValueObservers {
 public:
  using Handler = std::function<void(const Change &)>;
  /// Keeps the observation alive; dropping it ends it. It may outlive the object observed.
  using Token = std::shared_ptr<void>;

  [[nodiscard]] Token observe(const QString &key, Handler handler);
  void tell(const QString &key, const Change &change = {}) const;

 private:
  struct Observation {
    QString key;
    Handler handler;
  };
  mutable std::mutex mutex_;
  mutable std::vector<std::weak_ptr<Observation>> observations_;
};

}  // namespace tavril
