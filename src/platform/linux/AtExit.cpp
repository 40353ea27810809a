#include "platform/linux/AtExit.h"

#include <QtGlobal>

#include <atomic>
#include <cerrno>
#include <cstdlib>
#include <utility>

namespace tavril {

namespace {

// exit() calls back without an argument, so the object that it is meant for has to be found from here.
std::atomic<AtExit *> living = nullptr;

}  // namespace

AtExit::AtExit() {
  AtExit *none = nullptr;
  if (!living.compare_exchange_strong(none, this)) qFatal("There can be only one AtExit at a time");
}

AtExit::~AtExit() {
  AtExit *self = this;
  living.compare_exchange_strong(self, nullptr);
  runHandlers();
}

int AtExit::registerHandler(std::function<void()> handler) {
  if (!handler) return EINVAL;
  // The C library takes no registration back, so it is made once and finds nothing to do when no object
  // lives.
  static const int failed = std::atexit([] {
    if (AtExit *object = living.exchange(nullptr)) object->runHandlers();
  });
  if (failed != 0) return ENOMEM;
  const std::lock_guard lock(mutex_);
  handlers_.push_back(std::move(handler));
  return 0;
}

void AtExit::runHandlers() {
  std::unique_lock lock(mutex_);
  while (!handlers_.empty()) {
    const std::function<void()> handler = std::move(handlers_.back());
    handlers_.pop_back();
    lock.unlock();
    handler();
    lock.lock();
  }
}

}  // namespace tavril
