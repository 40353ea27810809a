#pragma once

#include "platform/PlainElement.h"

#include <QHash>
#include <QString>

#include <functional>
#include <map>
#include <memory>

namespace tavril {

class AppDelegate;
class SerialPort;
class Timer;
struct Desktop;
struct SharedState;

enum class ReportFormat { Table, Json };

/// Connects to the first listed port without a window, reads all twenty registers and tells the outcome once:
/// the text to print, or one line that says what was wrong and what to do. Main thread only.
class Report {
 public:
  struct Outcome {
    bool succeeded = false;
    QString text;
  };
  using Finished = std::function<void(const Outcome &)>;

  /// Seconds without an answer after which the device counts as silent.
  static constexpr int countdownSeconds = 30;

  /// Registers its own screen elements. Owns nothing it is given.
  Report(SharedState &state, AppDelegate &application, const Desktop &desktop, ReportFormat format,
         Finished finished);
  ~Report();
  Report(const Report &) = delete;
  Report &operator=(const Report &) = delete;

  /// Connects; `finished` may be called before this returns.
  void start();

 private:
  void update();
  void countDown();
  bool allRegistersRead() const;
  int registersRead() const;
  void finish(bool succeeded, const QString &text);
  void fail(const QString &text);
  QString table() const;
  QString json() const;

  SharedState &state_;
  AppDelegate &application_;
  const Desktop &desktop_;
  const ReportFormat format_;
  Finished finished_;
  std::map<QString, PlainElement> elements_;
  std::shared_ptr<SerialPort> port_;
  std::shared_ptr<Timer> updateTimer_;
  std::shared_ptr<Timer> countdownTimer_;
  int secondsLeft_ = countdownSeconds;
  int readSoFar_ = 0;
};

}  // namespace tavril
