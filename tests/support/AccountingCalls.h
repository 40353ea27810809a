#pragma once

#include "platform/TerminalCalls.h"

#include <QByteArray>

#include <algorithm>
#include <condition_variable>
#include <mutex>
#include <thread>
#include <vector>

namespace tavril {

/// Passes every call on and keeps the books: what was read and written, and which failures a port has to
/// tell. Thread-safe; made on the main thread.
class AccountingCalls final : public TerminalCalls {
 public:
  struct Books {
    int openings = 0;        ///< openings that also got their lock
    int failedOpenings = 0;  ///< each of these is told once
    int failedWrites = 0;    ///< and each of these
    int failedWaits = 0;     ///< each is told, unless the port was just closing
    int failedPolls = 0;     ///< those off the main thread: likewise
    int otherFailures = 0;   ///< told or not, by what they were for
    std::vector<QByteArray> reads;
    QByteArray written;
  };

  explicit AccountingCalls(TerminalCalls &real) : real_(real) {}
  Books books() const {
    const std::lock_guard lock(mutex_);
    return books_;
  }

  /// Returns when threads other than the main one have made so many calls more, or the time is over.
  void awaitCallsOfOthers(int count, std::chrono::milliseconds patience) {
    std::unique_lock lock(mutex_);
    const int awaited = callsOfOthers_ + count;
    called_.wait_for(lock, patience, [&] { return callsOfOthers_ >= awaited; });
  }

  CallResult open(const std::string &path) override {
    return counted(real_.open(path), &Books::failedOpenings);
  }
  CallResult lock(int descriptor) override {
    const CallResult locked = counted(real_.lock(descriptor), &Books::failedOpenings);
    if (!locked.failed()) note([](Books &books) { ++books.openings; });
    return locked;
  }
  CallResult unlock(int descriptor) override { return real_.unlock(descriptor); }
  CallResult clearStatusFlags(int descriptor) override { return real_.clearStatusFlags(descriptor); }
  CallResult stopBlocking(int descriptor) override { return real_.stopBlocking(descriptor); }
  CallResult attributes(int descriptor, termios &attributes) override {
    return counted(real_.attributes(descriptor, attributes), &Books::otherFailures);
  }
  CallResult setAttributes(int descriptor, WhenToApply when, const termios &attributes) override {
    return counted(real_.setAttributes(descriptor, when, attributes), &Books::otherFailures);
  }
  CallResult setSpeed(termios &attributes, unsigned long baudRate) override {
    return counted(real_.setSpeed(attributes, baudRate), &Books::otherFailures);
  }
  CallResult setFlowControl(termios &attributes, const FlowControl &flowControl) override {
    return counted(real_.setFlowControl(attributes, flowControl), &Books::otherFailures);
  }
  CallResult setArbitrarySpeed(int descriptor, unsigned long baudRate) override {
    return counted(real_.setArbitrarySpeed(descriptor, baudRate), &Books::otherFailures);
  }
  CallResult setLowLatency(int descriptor, bool on) override {
    return counted(real_.setLowLatency(descriptor, on), &Books::otherFailures);
  }
  CallResult pins(int descriptor, int &pins) override {
    return watched(real_.pins(descriptor, pins), &Books::failedPolls);
  }
  CallResult setPins(int descriptor, int pins) override {
    return counted(real_.setPins(descriptor, pins), &Books::otherFailures);
  }
  CallResult waitForInput(int descriptor, int wakeDescriptor, std::chrono::milliseconds timeout) override {
    return watched(real_.waitForInput(descriptor, wakeDescriptor, timeout), &Books::failedWaits);
  }
  CallResult read(int descriptor, std::span<std::byte> buffer) override {
    const CallResult got = watched(real_.read(descriptor, buffer), &Books::otherFailures);
    if (got.value > 0) {
      note([&](Books &books) {
        books.reads.emplace_back(reinterpret_cast<const char *>(buffer.data()), got.value);
      });
    }
    return got;
  }
  CallResult write(int descriptor, std::span<const std::byte> bytes) override {
    const CallResult taken = counted(real_.write(descriptor, bytes), &Books::failedWrites);
    if (taken.value > 0) {
      note([&](Books &books) {
        books.written.append(reinterpret_cast<const char *>(bytes.data()), taken.value);
      });
    }
    return taken;
  }
  CallResult close(int descriptor) override { return real_.close(descriptor); }
  CallResult openWake() override { return real_.openWake(); }
  void wake(int wakeDescriptor) override { real_.wake(wakeDescriptor); }
  void closeWake(int wakeDescriptor) override { real_.closeWake(wakeDescriptor); }

 private:
  template <typename Note>
  void note(Note note) {
    const std::lock_guard lock(mutex_);
    note(books_);
  }
  CallResult counted(CallResult result, int Books::*kind) {
    if (result.failed()) note([&](Books &books) { ++(books.*kind); });
    return result;
  }
  /// A call that other threads make too: there its failure is of this kind.
  CallResult watched(CallResult result, int Books::*kindElsewhere) {
    if (std::this_thread::get_id() == mainThread_) return counted(result, &Books::otherFailures);
    {
      const std::lock_guard lock(mutex_);
      ++callsOfOthers_;
    }
    called_.notify_all();
    return counted(result, kindElsewhere);
  }

  TerminalCalls &real_;
  const std::thread::id mainThread_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  std::condition_variable called_;
  int callsOfOthers_ = 0;
  Books books_;
};

}  // namespace tavril
