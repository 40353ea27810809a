#pragma once

#include "tests/support/PassedCalls.h"

#include <QByteArray>

#include <algorithm>
#include <condition_variable>
#include <functional>
#include <mutex>
#include <thread>
#include <vector>

namespace tavril {

/// Passes every call on and keeps the books: what was read and written, and which failures a port has to
/// tell. Thread-safe; made on the main thread.
class AccountingCalls final : public PassedCalls {
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

  using PassedCalls::PassedCalls;
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

  CallResult read(int descriptor, std::span<std::byte> buffer) override {
    const CallResult got = PassedCalls::read(descriptor, buffer);
    if (got.value > 0) {
      note([&](Books &books) {
        books.reads.emplace_back(reinterpret_cast<const char *>(buffer.data()), got.value);
      });
    }
    return got;
  }
  CallResult write(int descriptor, std::span<const std::byte> bytes) override {
    const CallResult taken = PassedCalls::write(descriptor, bytes);
    if (taken.value > 0) {
      note([&](Books &books) {
        books.written.append(reinterpret_cast<const char *>(bytes.data()), taken.value);
      });
    }
    return taken;
  }

 private:
  CallResult pass(Call call, const std::function<CallResult()> &make) override {
    const CallResult result = make();
    switch (call) {
      case Call::Lock:
        if (!result.failed()) note([](Books &books) { ++books.openings; });
        [[fallthrough]];
      case Call::Open:
        return counted(result, &Books::failedOpenings);
      case Call::Write:
        return counted(result, &Books::failedWrites);
      case Call::Wait:
        return watched(result, &Books::failedWaits);
      case Call::Pins:
        return watched(result, &Books::failedPolls);
      case Call::Read:
        return watched(result, &Books::otherFailures);
      case Call::Unlock:
      case Call::ClearStatusFlags:
      case Call::StopBlocking:
      case Call::Close:
      case Call::OpenWake:
        return result;
      default:
        return counted(result, &Books::otherFailures);
    }
  }
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

  const std::thread::id mainThread_ = std::this_thread::get_id();
  mutable std::mutex mutex_;
  std::condition_variable called_;
  int callsOfOthers_ = 0;
  Books books_;
};

}  // namespace tavril
