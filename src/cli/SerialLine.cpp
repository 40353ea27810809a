#include "cli/SerialLine.h"

#include "cli/Failure.h"
#include "platform/Background.h"
#include "platform/Log.h"
#include "serial/PortError.h"
#include "serial/SerialPort.h"
#include "serial/SerialRequest.h"

#include <chrono>
#include <utility>

namespace tavril::cli {

namespace {

struct Received {
  std::mutex mutex;
  QByteArray bytes;
};

}  // namespace

SerialLine::SerialLine(Background &background, Log &log, Port port)
    : background_(background), log_(log), port_(std::move(port)), name_(port_->name()) {}

Heard SerialLine::request(const QByteArray &data, Time timeout, Rule rule) {
  // A request that times out does not say what came meanwhile; its rule saw it.
  const auto received = std::make_shared<Received>();
  const auto request =
      SerialRequest::requestWithDataToSend(data, {}, std::chrono::duration<double>(timeout).count(),
                                           [received, rule = std::move(rule)](const QByteArray &bytes) {
                                             const std::lock_guard lock(received->mutex);
                                             received->bytes = bytes;
                                             return rule(bytes);
                                           });
  std::unique_lock lock(mutex_);
  failIfEnded();
  current_ = request;
  heard_.reset();
  lock.unlock();
  // Neither here nor on the main thread: an adapter that takes nothing would hold it up until the port is
  // closed. A request that could not be written stays pending until its time is over, so that comes back too.
  background_.run([port = port_, request] { port->sendRequest(request); });
  lock.lock();
  const bool isOver =
      changed_.wait_for(lock, timeout + longestDelay, [this] { return heard_.has_value() || hasEnded(); });
  current_.reset();
  failIfEnded();
  if (!isOver) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("%1 does not send: unplug the adapter, plug it in again and retry.").arg(name_)};
  }
  Heard heard = *std::exchange(heard_, std::nullopt);
  if (heard.kind == Heard::Kind::TimedOut) {
    const std::lock_guard receivedLock(received->mutex);
    heard.bytes = received->bytes;
  }
  return heard;
}

void SerialLine::pause(Time duration) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, duration, [this] { return hasEnded(); });
  failIfEnded();
}

Line::Time SerialLine::now() const {
  return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now().time_since_epoch());
}

void SerialLine::resume() {
  const std::lock_guard lock(mutex_);
  interrupted_ = false;
}

void SerialLine::interrupt() {
  const std::lock_guard lock(mutex_);
  interrupted_ = true;
  changed_.notify_all();
}

std::shared_ptr<const Error> SerialLine::lastError() const {
  const std::lock_guard lock(mutex_);
  return lastError_;
}

/// Expects the lock.
void SerialLine::failIfEnded() const {
  if (interrupted_) throw Failure{ExitCode::Interrupted, QStringLiteral("interrupted.")};
  if (removed_) {
    throw Failure{ExitCode::NoPort,
                  QStringLiteral("the port %1 was removed while it was in use. Check the cable, plug the "
                                 "adapter in again and retry.")
                      .arg(name_)};
  }
}

bool SerialLine::respondsTo(SerialPortCallback callback) const {
  switch (callback) {
    case SerialPortCallback::DidReceiveResponse:
    case SerialPortCallback::RequestDidTimeout:
    case SerialPortCallback::DidEncounterError:
    case SerialPortCallback::WasClosed:  // so that closing drops what is still to be sent
      return true;
    default:
      return false;
  }
}

void SerialLine::serialPortWasRemovedFromSystem(const Port &) {
  const std::lock_guard lock(mutex_);
  removed_ = true;
  changed_.notify_all();
}

void SerialLine::didReceiveResponse(const Port &, const QByteArray &bytes,
                                    const std::shared_ptr<SerialRequest> &request) {
  finish(request, {Heard::Kind::Response, bytes});
}

void SerialLine::requestDidTimeout(const Port &, const std::shared_ptr<SerialRequest> &request) {
  finish(request, {Heard::Kind::TimedOut, {}});
}

void SerialLine::didEncounterError(const Port &port, const Error &error) {
  log_.warn(portErrorLine(error, port->description()));
  const std::lock_guard lock(mutex_);
  lastError_ = std::make_shared<const Error>(error);
}

void SerialLine::finish(const std::shared_ptr<SerialRequest> &request, Heard heard) {
  const std::lock_guard lock(mutex_);
  if (request != current_) return;
  heard_ = std::move(heard);
  changed_.notify_all();
}

}  // namespace tavril::cli
