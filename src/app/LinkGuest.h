#pragma once

#include "app/ServoLink.h"

#include <chrono>
#include <memory>
#include <stop_token>
#include <utility>

namespace tavril {

/// A part of the program that talks to the servo beside the editor. Its claim to changes ends when it is
/// destroyed.
class LinkGuest {
 public:
  explicit LinkGuest(std::shared_ptr<ServoLink> link) : link_(std::move(link)), guest_(link_->admit()) {}
  ~LinkGuest() { releaseChanges(); }
  LinkGuest(const LinkGuest &) = delete;
  LinkGuest &operator=(const LinkGuest &) = delete;

  /// See ServoLink.
  LinkAnswer ask(const wire::CommandBuffer &command, const ServoLink::Until &until,
                 std::chrono::microseconds timeout, const std::stop_token &cancelled = {}) {
    return link_->ask(guest_, command, until, timeout, cancelled);
  }
  bool stop(const wire::CommandBuffer &command) { return link_->stop(guest_, command); }
  bool claimChanges() { return link_->claimChanges(guest_); }
  void releaseChanges() { link_->releaseChanges(guest_); }

 private:
  const std::shared_ptr<ServoLink> link_;
  const LinkArbiter::Guest guest_;
};

}  // namespace tavril
