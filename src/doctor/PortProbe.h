#pragma once

#include "terminal/TerminalCalls.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <memory>

struct termios;

namespace tavril::doctor {

/// A port that is opened for nobody else, asked something, and closed with its settings as they were. All for
/// one thread, except cancel(), which any thread may call. Every call that waits ends soon after it.
class PortProbe {
 public:
  using Time = std::chrono::milliseconds;
  using Rule = std::function<bool(const QByteArray &heard)>;

  enum class End { Accepted, TimedOut, Gone, Cancelled };

  explicit PortProbe(TerminalCalls &terminal);
  /// Closes the port, if it is open.
  ~PortProbe();
  PortProbe(const PortProbe &) = delete;
  PortProbe &operator=(const PortProbe &) = delete;

  CallResult open(const QString &path);
  /// 115200 baud, eight bits, no parity, no flow control. A driver that says yes and does otherwise has
  /// failed.
  CallResult takeSettings();
  /// Hands over all bytes; EAGAIN when the adapter does not take them.
  CallResult send(const QByteArray &bytes);
  /// Adds what comes to `heard` until the rule accepts it or the time is over. Without a rule: until then.
  End listen(Time duration, QByteArray &heard, const Rule &rule = nullptr);

  /// Puts the line settings back and lets go of the port. Harmless when it is not open.
  void close();

  void cancel();
  bool isCancelled() const { return cancelled_; }

 private:
  bool isOpen() const { return descriptor_ >= 0; }

  TerminalCalls &terminal_;
  int descriptor_ = -1;
  bool locked_ = false;
  int wake_ = -1;
  std::unique_ptr<termios> original_;
  std::atomic<bool> cancelled_ = false;
};

}  // namespace tavril::doctor
