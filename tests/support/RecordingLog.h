#pragma once

#include "platform/Log.h"

#include <mutex>

namespace tavril {

/// Keeps the lines. Thread-safe.
class RecordingLog final : public Log {
 public:
  void write(const QString &line) override {
    const std::lock_guard lock(mutex_);
    lines_.append(line);
  }

  QStringList lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }

  void clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
  }

 private:
  mutable std::mutex mutex_;
  QStringList lines_;
};

}  // namespace tavril
