#pragma once

#include "tests/support/Hook.h"
#include "tests/support/PassedCalls.h"

#include <algorithm>
#include <functional>
#include <map>
#include <mutex>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include <termios.h>

namespace tavril {

/// Passes the calls on to the real ones, except those that the test makes fail or answers itself.
/// Thread-safe.
class FaultyTerminalCalls final : public PassedCalls {
 public:
  using PassedCalls::PassedCalls;

  /// The next `times` calls of this kind fail; -1: all from now on.
  void fail(Call call, int error, int times = -1) {
    const std::lock_guard lock(mutex_);
    faults_[call] = {error, times};
  }
  /// All calls of this kind give this value from now on, and are not made.
  void answer(Call call, long value) {
    const std::lock_guard lock(mutex_);
    answers_[call] = value;
  }
  void heal(Call call) {
    const std::lock_guard lock(mutex_);
    faults_.erase(call);
    answers_.erase(call);
  }
  /// Pins of a line that has some; nothing: the real line's.
  void setPinsOfLine(std::optional<int> pins) {
    const std::lock_guard lock(mutex_);
    pins_ = pins;
  }
  std::optional<int> pinsOfLine() const {
    const std::lock_guard lock(mutex_);
    return pins_;
  }
  /// Whether the driver hands bytes over without delay; nothing: the real line, which has no such choice.
  void setLowLatencyOfLine(std::optional<bool> on) {
    const std::lock_guard lock(mutex_);
    lowLatency_ = on;
  }
  std::optional<bool> lowLatencyOfLine() const {
    const std::lock_guard lock(mutex_);
    return lowLatency_;
  }
  int count(Call call) const {
    const std::lock_guard lock(mutex_);
    const auto found = counts_.find(call);
    return found == counts_.end() ? 0 : found->second;
  }
  /// The descriptors that were to be closed.
  std::vector<int> closed() const {
    const std::lock_guard lock(mutex_);
    return closed_;
  }
  /// How many reads brought something, and how many bytes in all.
  int readsWithBytes() const {
    const std::lock_guard lock(mutex_);
    return readsWithBytes_;
  }
  long bytesRead() const {
    const std::lock_guard lock(mutex_);
    return bytesRead_;
  }
  /// Whether who has read last waits for more again, and so has done with what it read.
  bool waitsAgainAfterReading() const {
    const std::lock_guard lock(mutex_);
    const auto waits = counts_.find(Call::Wait);
    return waits != counts_.end() && waits->second > waitsAtLastRead_;
  }
  /// How many openings are over whose threads have all left.
  int wakesClosed() const {
    const std::lock_guard lock(mutex_);
    return wakesClosed_;
  }
  struct Setting {
    WhenToApply when;
    termios attributes;
  };
  /// The settings made so far.
  std::vector<Setting> settings() const {
    const std::lock_guard lock(mutex_);
    return settings_;
  }
  /// The calls so far, without waiting and polling.
  std::vector<Call> order() const {
    const std::lock_guard lock(mutex_);
    return order_;
  }
  /// Called at the beginning of each call, on the calling thread.
  Hook<Call> atCall;

  CallResult setAttributes(int descriptor, WhenToApply when, const termios &attributes) override {
    return pass(Call::SetAttributes, [&] {
      {
        const std::lock_guard lock(mutex_);
        settings_.push_back({when, attributes});
      }
      return real_.setAttributes(descriptor, when, attributes);
    });
  }
  CallResult setLowLatency(int descriptor, bool on) override {
    return pass(Call::SetLowLatency, [&] {
      const auto before = lowLatencyOfLine();
      if (!before) return real_.setLowLatency(descriptor, on);
      setLowLatencyOfLine(on);
      return CallResult::success(*before ? 1 : 0);
    });
  }
  CallResult pins(int descriptor, int &pins) override {
    return pass(Call::Pins, [&] {
      if (const auto given = pinsOfLine()) {
        pins = *given;
        return CallResult::success();
      }
      return real_.pins(descriptor, pins);
    });
  }
  CallResult setPins(int descriptor, int pins) override {
    return pass(Call::SetPins, [&] {
      if (!pinsOfLine()) return real_.setPins(descriptor, pins);
      setPinsOfLine(pins);
      return CallResult::success();
    });
  }
  CallResult read(int descriptor, std::span<std::byte> buffer) override {
    const CallResult got = PassedCalls::read(descriptor, buffer);
    const std::lock_guard lock(mutex_);
    if (got.value > 0) ++readsWithBytes_;
    if (got.value > 0) waitsAtLastRead_ = counts_[Call::Wait];
    if (got.value > 0) bytesRead_ += got.value;
    return got;
  }
  CallResult write(int descriptor, std::span<const std::byte> bytes) override {
    if (writeAtMost) bytes = bytes.first(std::min(*writeAtMost, bytes.size()));
    return PassedCalls::write(descriptor, bytes);
  }
  CallResult close(int descriptor) override {
    {
      const std::lock_guard lock(mutex_);
      closed_.push_back(descriptor);
    }
    return PassedCalls::close(descriptor);
  }
  void closeWake(int wakeDescriptor) override {
    PassedCalls::closeWake(wakeDescriptor);
    const std::lock_guard lock(mutex_);
    ++wakesClosed_;
  }

  /// Writes take no more than this at a time, if set before the port is opened.
  std::optional<std::size_t> writeAtMost;

 private:
  struct Fault {
    int error;
    int times;
  };

  CallResult pass(Call call, const std::function<CallResult()> &make) override {
    atCall(call);
    {
      const std::lock_guard lock(mutex_);
      ++counts_[call];
      if (call != Call::Wait && call != Call::Pins) order_.push_back(call);
      const auto fault = faults_.find(call);
      if (fault != faults_.end()) {
        const int error = fault->second.error;
        if (fault->second.times > 0 && --fault->second.times == 0) faults_.erase(fault);
        return CallResult::failure(error);
      }
      if (const auto answer = answers_.find(call); answer != answers_.end()) {
        return CallResult::success(answer->second);
      }
    }
    return make();
  }

  mutable std::mutex mutex_;
  std::map<Call, Fault> faults_;
  std::map<Call, long> answers_;
  std::map<Call, int> counts_;
  std::vector<int> closed_;
  std::vector<Call> order_;
  std::vector<Setting> settings_;
  int wakesClosed_ = 0;
  int readsWithBytes_ = 0;
  int waitsAtLastRead_ = 0;
  long bytesRead_ = 0;
  std::optional<int> pins_;
  std::optional<bool> lowLatency_;
};

}  // namespace tavril
