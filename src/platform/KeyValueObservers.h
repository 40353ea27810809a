#pragma once

#include <QString>

#include <cstddef>
#include <functional>
#include <memory>
#include <mutex>
#include <utility>
#include <vector>

namespace tavril {

/// How an observed property has changed; the indexes are those of the list entries that were inserted or
/// removed.
struct Change {
  enum class Kind { Setting, Insertion, Removal };
  Kind kind = Kind::Setting;
  std::vector<std::size_t> indexes;
};

/// The observers of one object's properties. Their handlers are called on the thread that changed the
/// property, after the change. Thread-safe; observers may be added and dropped while handlers are called. No
/// handler is called after its token was dropped: dropping waits for a handler that runs on another thread.
/// So a handler must not wait for a thread that may be dropping its token.
class KeyValueObservers {
 public:
  using Handler = std::function<void(const Change &)>;
  /// Dropping it ends the observation. It may outlive the observed object.
  using Token = std::shared_ptr<void>;

  [[nodiscard]] Token observe(const QString &key, Handler handler);
  void tell(const QString &key, const Change &change = {}) const;

 private:
  struct Observation {
    Observation(QString observedKey, Handler told) : key(std::move(observedKey)), handler(std::move(told)) {}
    QString key;
    Handler handler;
    std::recursive_mutex running;  // held while the handler runs, which may drop its own token
    bool isDropped = false;        // guarded by it
  };
  class Holder;
  mutable std::mutex mutex_;
  mutable std::vector<std::weak_ptr<Observation>> observations_;
};

}  // namespace tavril
