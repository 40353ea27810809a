#include "platform/KeyValueObservers.h"

#include <utility>

namespace tavril {

KeyValueObservers::Token KeyValueObservers::observe(const QString &key, Handler handler) {
  auto observation = std::make_shared<Observation>(Observation{key, std::move(handler)});
  const std::lock_guard lock(mutex_);
  observations_.push_back(observation);
  return observation;
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
  for (const auto &observation : told) observation->handler(change);
}

}  // namespace tavril
