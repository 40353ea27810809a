#pragma once

#include "platform/Background.h"

#include <QString>

#include <chrono>
#include <memory>

namespace tavril {

class WorkerThreads;

/// Work off the main thread on threads of its own making, none of which outlives it. Thread-safe.
class ThreadBackground final : public Background {
 public:
  /// `idleTime`: how long a serial queue keeps its thread when it has nothing to do.
  explicit ThreadBackground(std::chrono::milliseconds idleTime = std::chrono::seconds(1));
  /// Cancels what repeats, lets all other jobs finish and waits for them.
  ~ThreadBackground() override;
  ThreadBackground(const ThreadBackground &) = delete;
  ThreadBackground &operator=(const ThreadBackground &) = delete;

  void run(Job job) override;
  std::shared_ptr<RepeatingWork> repeat(std::chrono::milliseconds interval, Job tick) override;
  /// The queue may outlive the background; whoever then brings it a job runs it.
  std::shared_ptr<SerialQueue> serialQueue(const QString &label) override;

 private:
  const std::chrono::milliseconds idleTime_;
  const std::shared_ptr<WorkerThreads> threads_;
};

}  // namespace tavril
