#pragma once

#include "terminal/LineSettings.h"
#include "terminal/TerminalCalls.h"

#include <array>
#include <memory>
#include <string>

struct termios;

namespace tavril {

/// Which call comes when, while a terminal is opened, set up, put back and closed; and what the terminal was
/// before. The steps are separate since whoever makes them may have to look around between two of them.
class LineTakeover {
 public:
  explicit LineTakeover(TerminalCalls &calls);
  ~LineTakeover();
  LineTakeover(const LineTakeover &) = delete;
  LineTakeover &operator=(const LineTakeover &) = delete;

  /// Opens and locks the terminal; the value is its descriptor. Reading and writing do not block yet.
  static CallResult openExclusively(TerminalCalls &calls, const std::string &path);

  /// The line has been opened anew: what is known of it was true of the opening before.
  void forget();
  /// If they cannot be read, there is nothing to put back; this is no failure.
  CallResult keepAttributes(int descriptor);
  /// All that can be set is set, also if something cannot.
  CallResult applySettings(int descriptor);
  /// A driver that has no such setting is no failure.
  CallResult takeLowLatency(int descriptor);
  /// The three steps above in their order, each for a line that was opened and is still open.
  static constexpr std::array<CallResult (LineTakeover::*)(int descriptor), 3> steps{
      &LineTakeover::keepAttributes, &LineTakeover::applySettings, &LineTakeover::takeLowLatency};

  /// Ends reads and writes that block in other threads, then restores the line.
  void giveBack(int descriptor);
  /// Makes the line what it was before. Waits for its output.
  void restore(int descriptor);
  /// The end: unlocks and closes the terminal.
  static CallResult release(TerminalCalls &calls, int descriptor);

  /// What applySettings() and takeLowLatency() are to set.
  LineSettings settings;

 private:
  TerminalCalls &calls_;
  std::unique_ptr<termios> original_;  // nothing when they could not be read
  bool hasTakenLowLatency_ = false;    // and it was off before
};

}  // namespace tavril
