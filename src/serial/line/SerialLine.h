#pragma once

#include "serial/SerialPortDelegate.h"
#include "servo/Line.h"

#include <QByteArray>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace tavril {

class Background;
class Log;

/// The way to the bridge over a serial port. request() and pause() are for the one thread that works, and not
/// the main thread, which carries what comes from the port; cancel() and resume() are for any thread. Must be
/// the delegate of its port, and outlive it or be dropped as delegate.
class SerialLine final : public servo::Line, public SerialPortDelegate {
 public:
  /// How long over its time-out a request may take when the machine is busy. Longer means that the adapter
  /// does not take what is sent to it: the time-out itself then waits behind the sending.
  static constexpr servo::Time longestDelay{5'000'000};

  SerialLine(Background &background, Log &log, Port port);
  /// Opens the port as the bridge needs it, with a new line as its delegate. If the port is not open then,
  /// lastError() says why.
  static std::shared_ptr<SerialLine> open(Background &background, Log &log, const Port &port);

  servo::Received request(wire::Bytes data, servo::Time timeout, Rule rule) override;
  servo::Received::End pause(servo::Time duration) override;
  servo::Time now() const override;
  void cancel() override;
  /// Lets the work go on after it was cancelled.
  void resume();
  /// What the port told last went wrong with it.
  std::shared_ptr<const Error> lastError() const;

  bool respondsTo(SerialPortCallback callback) const override;
  void serialPortWasRemovedFromSystem(const Port &port) override;
  void didReceiveResponse(const Port &port, const QByteArray &bytes,
                          const std::shared_ptr<SerialRequest> &request) override;
  void requestDidTimeout(const Port &port, const std::shared_ptr<SerialRequest> &request) override;
  void didEncounterError(const Port &port, const Error &error) override;

 private:
  using End = servo::Received::End;

  void finish(const std::shared_ptr<SerialRequest> &request, End end);
  std::optional<End> whyEnded() const;

  Background &background_;
  Log &log_;
  const Port port_;

  mutable std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  std::shared_ptr<SerialRequest> current_;
  std::optional<End> end_;  ///< of the current request
  bool cancelled_ = false;
  bool removed_ = false;
  std::shared_ptr<const Error> lastError_;
};

}  // namespace tavril
