#include "platform/KeyValueObservers.h"

#include <utility>

namespace tavril {

/// What a token keeps.
class KeyValueObservers::Holder {
 public:
  explicit Holder(std::shared_ptr<Observation> observation) : observation_(std::move(observation)) {}
  ~Holder() {
    const std::lock_guard running(observation_->running);
    observation_->isDropped = true;
  }
  Holder(const Holder &) = delete;
  Holder &operator=(const Holder &) = delete;

 private:
  const std::shared_ptr<Observation> observation_;
};

KeyValueObservers::Token KeyValueObservers::observe(const QString &key, Handler handler) {
  const auto observation = std::make_shared<Observation>(key, std::move(handler));
  {
    const std::lock_guard lock(mutex_);
    observations_.push_back(observation);
  }
  return std::make_shared<Holder>(observation);
}

void KeyValueObservers::tell(const QString &key, const Change &change) const {
  std::vector<std::shared_ptr<Observation>> told;
  {
    const std::lock_guard lock(mutex_);
    std::erase_if(observations_, [](const auto &observation) { return observation.expired(); });
    for (const auto &weak : observations_) {
      if (auto observation = weak.lock(); observation && observation->key == key) told.push_back(observation);
    }
  }
  for (const auto &observation : told) {
    const std::lock_guard running(observation->running);
    if (!observation->isDropped) observation->handler(change);
  }
}

}  // namespace tavril
