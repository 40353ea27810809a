#pragma once

#include "terminal/TerminalCalls.h"

#include <QByteArray>

#include <algorithm>
#include <cerrno>
#include <condition_variable>
#include <cstring>
#include <functional>
#include <mutex>
#include <set>
#include <utility>

#include <termios.h>

namespace tavril {

/// One terminal that exists in memory only, for tests that need very many exchanges: no kernel, no
/// descriptors, no time but that of a wait. Thread-safe, except that `atWrite` is set before it is opened.
class MemoryTerminal final : public TerminalCalls {
 public:
  /// What the device does with the bytes of one write; called on the writing thread, may call give().
  std::function<void(const QByteArray &)> atWrite;

  /// The device sends.
  void give(const QByteArray &bytes) {
    change([&] { input_ += bytes; });
  }
  /// The plug is pulled: an open line is hung up for ever, and no new one can be opened.
  void unplug() {
    change([&] {
      present_ = false;
      hungUp_ = open_;
      input_.clear();
    });
  }
  void plugIn() {
    change([&] { present_ = true; });
  }
  /// Terminals and wake descriptors that were opened and not closed.
  std::size_t openDescriptors() const {
    const std::lock_guard lock(mutex_);
    return open_.size() + wakes_.size();
  }
  /// Bytes that nobody has read yet.
  qsizetype unread() const {
    const std::lock_guard lock(mutex_);
    return input_.size();
  }

  CallResult open(const std::string &) override {
    return whilePresent([&] {
      open_.insert(++lastDescriptor_);
      return CallResult::success(lastDescriptor_);
    });
  }
  CallResult lock(int) override { return CallResult::success(); }
  CallResult unlock(int) override { return CallResult::success(); }
  CallResult clearStatusFlags(int) override { return CallResult::success(); }
  CallResult stopBlocking(int) override { return CallResult::success(); }
  CallResult attributes(int descriptor, termios &attributes) override {
    return onLine(descriptor, [&] {
      attributes = attributes_;
      return CallResult::success();
    });
  }
  CallResult setAttributes(int descriptor, WhenToApply, const termios &attributes) override {
    return onLine(descriptor, [&] {
      attributes_ = attributes;
      return CallResult::success();
    });
  }
  CallResult setSpeed(termios &, unsigned long) override { return CallResult::success(); }
  CallResult setFlowControl(termios &, const FlowControl &) override { return CallResult::success(); }
  CallResult setArbitrarySpeed(int, unsigned long) override { return CallResult::success(); }
  CallResult setLowLatency(int, bool) override { return CallResult::failure(ENOTTY); }
  CallResult pins(int descriptor, int &pins) override {
    return onLine(descriptor, [&] {
      pins = pins_;
      return CallResult::success();
    });
  }
  CallResult setPins(int descriptor, int pins) override {
    return onLine(descriptor, [&] {
      pins_ = pins;
      return CallResult::success();
    });
  }
  CallResult waitForInput(int descriptor, int wake, std::chrono::microseconds timeout) override {
    std::unique_lock lock(mutex_);
    const auto readable = [&] { return !input_.isEmpty() || hungUp_.contains(descriptor); };
    changed_.wait_for(lock, timeout, [&] { return readable() || woken_.contains(wake); });
    return CallResult::success(readable() ? 1 : 0);
  }
  CallResult read(int descriptor, std::span<std::byte> buffer) override {
    const std::lock_guard lock(mutex_);
    if (hungUp_.contains(descriptor)) return CallResult::success(0);
    if (!open_.contains(descriptor)) return CallResult::failure(EBADF);
    if (input_.isEmpty()) return CallResult::failure(EAGAIN);
    const auto count = std::min<std::size_t>(buffer.size(), static_cast<std::size_t>(input_.size()));
    std::memcpy(buffer.data(), input_.constData(), count);
    input_.remove(0, static_cast<qsizetype>(count));
    return CallResult::success(static_cast<long>(count));
  }
  CallResult write(int descriptor, std::span<const std::byte> bytes) override {
    const CallResult able = onLine(descriptor, [] { return CallResult::success(); });
    if (able.failed()) return CallResult::failure(EIO);
    const auto count = static_cast<qsizetype>(bytes.size());
    if (atWrite) atWrite(QByteArray(reinterpret_cast<const char *>(bytes.data()), count));
    return CallResult::success(count);
  }
  CallResult close(int descriptor) override {
    const std::lock_guard lock(mutex_);
    hungUp_.erase(descriptor);
    return open_.erase(descriptor) == 1 ? CallResult::success() : CallResult::failure(EBADF);
  }
  CallResult openWake() override {
    const std::lock_guard lock(mutex_);
    wakes_.insert(++lastDescriptor_);
    return CallResult::success(lastDescriptor_);
  }
  void wake(int descriptor) override {
    change([&] { woken_.insert(descriptor); });
  }
  void closeWake(int descriptor) override {
    const std::lock_guard lock(mutex_);
    wakes_.erase(descriptor);
    woken_.erase(descriptor);
  }

 private:
  template <typename Change>
  void change(Change change) {
    {
      const std::lock_guard lock(mutex_);
      change();
    }
    changed_.notify_all();
  }
  template <typename Act>
  CallResult whilePresent(Act act) {
    const std::lock_guard lock(mutex_);
    return present_ ? act() : CallResult::failure(ENOENT);
  }
  template <typename Act>
  CallResult onLine(int descriptor, Act act) {
    const std::lock_guard lock(mutex_);
    if (!open_.contains(descriptor)) return CallResult::failure(EBADF);
    return hungUp_.contains(descriptor) ? CallResult::failure(ENXIO) : act();
  }

  mutable std::mutex mutex_;
  std::condition_variable changed_;
  QByteArray input_;
  std::set<int> open_;
  std::set<int> hungUp_;
  std::set<int> wakes_;
  std::set<int> woken_;
  termios attributes_{};
  int pins_ = 0;
  int lastDescriptor_ = 1000;
  bool present_ = true;
};

}  // namespace tavril
