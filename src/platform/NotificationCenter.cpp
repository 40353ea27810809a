#include "platform/NotificationCenter.h"

#include <algorithm>
#include <utility>

namespace tavril {

void NotificationCenter::addObserver(const void *observer, const QString &name, Handler handler) {
  registrations_.push_back({observer, name, std::move(handler), nextSerial_++});
}

void NotificationCenter::removeObserver(const void *observer) {
  std::erase_if(registrations_, [observer](const Registration &r) { return r.observer == observer; });
}

void NotificationCenter::post(const Notification &notification) {
  const std::vector<Registration> atPost = registrations_;
  for (const Registration &registration : atPost) {
    if (registration.name != notification.name) continue;
    const bool stillRegistered = std::ranges::any_of(
        registrations_, [&](const Registration &r) { return r.serial == registration.serial; });
    if (stillRegistered) registration.handler(notification);
  }
}

}  // namespace tavril
