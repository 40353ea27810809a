#pragma once

#include "servo/Line.h"
#include "terminal/TerminalCalls.h"

#include <QString>

#include <atomic>
#include <memory>
#include <optional>

struct termios;

namespace tavril::doctor {

/// A port that is opened for nobody else, asked something, and closed with its settings as they were. All for
/// one thread, except cancel(), which any thread may call.
class PortProbe final : public servo::Line {
 public:
  explicit PortProbe(TerminalCalls &terminal);
  /// Closes the port, if it is open.
  ~PortProbe() override;
  PortProbe(const PortProbe &) = delete;
  PortProbe &operator=(const PortProbe &) = delete;

  CallResult open(const QString &path);
  /// 115200 baud, eight bits, no parity, no flow control. A driver that says yes and does otherwise has
  /// failed.
  CallResult takeSettings();
  servo::Received request(wire::Bytes data, servo::Time timeout, Rule rule) override;
  /// Reads what comes meanwhile, which answers nothing.
  servo::Received::End pause(servo::Time duration) override;
  servo::Time now() const override;

  /// Puts the line settings back and lets go of the port. Harmless when it is not open.
  void close();

  void cancel() override;
  bool isCancelled() const { return cancelled_; }

 private:
  bool isOpen() const { return descriptor_ >= 0; }
  std::optional<servo::Received::End> send(wire::Bytes bytes);
  servo::Received::End listen(servo::Time duration, servo::Received &received, const Rule &rule);

  TerminalCalls &terminal_;
  int descriptor_ = -1;
  bool locked_ = false;
  int wake_ = -1;
  std::unique_ptr<termios> original_;
  std::atomic<bool> cancelled_ = false;
};

}  // namespace tavril::doctor
