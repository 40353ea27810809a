#pragma once

#include "cli/Line.h"
#include "serial/SerialPortDelegate.h"

#include <QByteArray>
#include <QString>

#include <condition_variable>
#include <memory>
#include <mutex>
#include <optional>

namespace tavril {
class Background;
class Log;
}  // namespace tavril

namespace tavril::cli {

/// The way to the bridge over a serial port. request() and pause() are for the one thread that works, and not
/// the main thread, which carries what comes from the port; the rest is for the main thread. Must be the
/// delegate of its port, and outlive it or be dropped as delegate.
class SerialLine final : public Line, public SerialPortDelegate {
 public:
  /// How long over its time-out a request may take when the machine is busy. Longer means that the adapter
  /// does not take what is sent to it: the time-out itself then waits behind the sending.
  static constexpr Time longestDelay{5000};

  SerialLine(Background &background, Log &log, Port port);

  Heard request(const QByteArray &data, Time timeout, Rule rule) override;
  void pause(Time duration) override;
  Time now() const override;
  QString name() const override { return name_; }

  /// Ends what is waited for, now and later, with a Failure of the kind Interrupted.
  void interrupt();
  /// Lets the work go on after it was interrupted.
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
  void finish(const std::shared_ptr<SerialRequest> &request, Heard heard);
  bool hasEnded() const { return interrupted_ || removed_; }
  void failIfEnded() const;

  Background &background_;
  Log &log_;
  const Port port_;
  const QString name_;

  mutable std::mutex mutex_;  // guards all below
  std::condition_variable changed_;
  std::shared_ptr<SerialRequest> current_;
  std::optional<Heard> heard_;
  bool interrupted_ = false;
  bool removed_ = false;
  std::shared_ptr<const Error> lastError_;
};

}  // namespace tavril::cli
