#pragma once

#include "platform/Log.h"

#include <mutex>

namespace tavril {

/// Keeps the lines, until it is told not to. Thread-safe.
class RecordingLog final : public Log {
 public:
  void write(const QString &line) override {
    const std::lock_guard lock(mutex_);
    if (keeps_) lines_.append(line);
  }
  void warn(const QString &line) override {
    const std::lock_guard lock(mutex_);
    if (!keeps_) return;
    lines_.append(line);
    warnings_.append(line);
  }

  QStringList lines() const {
    const std::lock_guard lock(mutex_);
    return lines_;
  }
  /// Those of the lines that say what has gone wrong.
  QStringList warnings() const {
    const std::lock_guard lock(mutex_);
    return warnings_;
  }

  /// For tests that look at memory.
  void stopKeeping() {
    const std::lock_guard lock(mutex_);
    keeps_ = false;
    lines_.clear();
    warnings_.clear();
  }
  bool isEnabled() const override {
    const std::lock_guard lock(mutex_);
    return keeps_;
  }

  void clear() {
    const std::lock_guard lock(mutex_);
    lines_.clear();
    warnings_.clear();
  }

 private:
  mutable std::mutex mutex_;
  QStringList lines_;
  QStringList warnings_;
  bool keeps_ = true;
};

}  // namespace tavril
