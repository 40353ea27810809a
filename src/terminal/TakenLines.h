#pragma once

#include <map>
#include <mutex>

namespace tavril {

/// The terminals that this process has taken, with the settings that they had before: for an end that cannot
/// wait until each is closed. Thread-safe.
class TakenLines {
 public:
  TakenLines();
  ~TakenLines();
  TakenLines(const TakenLines &) = delete;
  TakenLines &operator=(const TakenLines &) = delete;

  /// Notes the settings that the terminal has now.
  void take(int descriptor);
  /// The terminal is given up: there is nothing left to put back.
  void giveUp(int descriptor);
  /// Gives every terminal its settings back and lets others open it. Output that still waits is dropped.
  void putBack();

 private:
  struct Settings;

  std::mutex mutex_;
  std::map<int, Settings> lines_;
};

}  // namespace tavril
