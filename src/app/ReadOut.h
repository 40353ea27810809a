#pragma once

#include "app/ReadOutTexts.h"

#include <QString>

#include <functional>
#include <memory>

namespace tavril {

class AppDelegate;
class SerialPort;
class Timer;
struct Desktop;
struct SharedState;

/// Connects to the first listed port, as a user would, and watches until exactly one servo has answered and
/// all twenty registers are shown, or until this has failed. It looks only at what a user could see.
class ReadOut {
 public:
  /// Empty when all registers were read, else one line that says what was wrong and what to do.
  using Finished = std::function<void(const QString &problem)>;

  /// The registers' screen elements must be registered before start().
  ReadOut(SharedState &state, AppDelegate &application, const Desktop &desktop, Finished finished);
  ~ReadOut();
  ReadOut(const ReadOut &) = delete;
  ReadOut &operator=(const ReadOut &) = delete;

  /// Connects; `finished` is called once, perhaps before this returns.
  void start();

 private:
  void update();
  void countDown();
  int registersRead() const;
  void finish(const QString &problem);

  SharedState &state_;
  AppDelegate &application_;
  const Desktop &desktop_;
  Finished finished_;
  std::shared_ptr<SerialPort> port_;
  std::shared_ptr<Timer> updateTimer_;
  std::shared_ptr<Timer> countdownTimer_;
  int secondsLeft_ = readOutTexts::countdownSeconds;
  int readSoFar_ = 0;
  bool detected_ = false;
  bool hasAskedAgain_ = false;
};

}  // namespace tavril
