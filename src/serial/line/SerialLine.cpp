#include "serial/line/SerialLine.h"

#include "platform/Background.h"
#include "platform/Bytes.h"
#include "platform/Log.h"
#include "serial/PortError.h"
#include "serial/SerialPort.h"
#include "serial/SerialRequest.h"

#include <chrono>
#include <utility>

namespace tavril {

using servo::Received;
using servo::Time;

namespace {

constexpr unsigned long baudRate = 115200;

/// What has come so far; a request that times out does not say it.
struct SoFar {
  std::mutex mutex;
  Received received;
};

Time steadyNow() {
  return std::chrono::duration_cast<Time>(std::chrono::steady_clock::now().time_since_epoch());
}

}  // namespace

SerialLine::SerialLine(Background &background, Log &log, Port port)
    : background_(background), log_(log), port_(std::move(port)) {}

std::shared_ptr<SerialLine> SerialLine::open(Background &background, Log &log, const Port &port) {
  auto line = std::make_shared<SerialLine>(background, log, port);
  port->setDelegate(line);
  port->setBaudRate(baudRate);
  port->setUsesLowLatency(true);
  port->open();
  return line;
}

Received SerialLine::request(wire::Bytes data, Time timeout, Rule rule) {
  const auto soFar = std::make_shared<SoFar>();
  const auto request = SerialRequest::requestWithDataToSend(
      toByteArray(data), {}, std::chrono::duration<double>(timeout).count(),
      [soFar, rule = std::move(rule)](const QByteArray &bytes) {
        const std::lock_guard lock(soFar->mutex);
        const wire::Bytes all = asBytes(bytes);
        soFar->received.bytes.assign(all.begin(), all.end());
        if (!all.empty()) soFar->received.arrivedAt = steadyNow();
        return rule(all);
      });
  std::unique_lock lock(mutex_);
  if (const auto end = whyEnded()) return {.end = *end};
  current_ = request;
  end_.reset();
  lock.unlock();
  const Time sentAt = steadyNow();
  // Neither here nor on the main thread: an adapter that takes nothing would hold it up until the port is
  // closed. A request that could not be written stays pending until its time is over, so that comes back too.
  background_.run([port = port_, request] { port->sendRequest(request); });
  lock.lock();
  const bool isOver = changed_.wait_for(lock, timeout + longestDelay,
                                        [this] { return end_.has_value() || whyEnded().has_value(); });
  current_.reset();
  const End end = whyEnded().value_or(isOver ? *end_ : End::NotTaken);
  lock.unlock();
  const std::lock_guard receivedLock(soFar->mutex);
  Received received = soFar->received;
  received.end = end;
  received.sentAt = sentAt;
  return received;
}

Received::End SerialLine::pause(Time duration) {
  std::unique_lock lock(mutex_);
  changed_.wait_for(lock, duration, [this] { return whyEnded().has_value(); });
  return whyEnded().value_or(End::TimedOut);
}

Time SerialLine::now() const {
  return steadyNow();
}

void SerialLine::cancel() {
  const std::lock_guard lock(mutex_);
  cancelled_ = true;
  changed_.notify_all();
}

void SerialLine::resume() {
  const std::lock_guard lock(mutex_);
  cancelled_ = false;
}

std::shared_ptr<const Error> SerialLine::lastError() const {
  const std::lock_guard lock(mutex_);
  return lastError_;
}

/// Why nothing more can be sent, if so. Expects the lock.
std::optional<Received::End> SerialLine::whyEnded() const {
  if (cancelled_) return End::Cancelled;
  if (removed_) return End::Gone;
  return std::nullopt;
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

void SerialLine::didReceiveResponse(const Port &, const QByteArray &,
                                    const std::shared_ptr<SerialRequest> &request) {
  finish(request, End::Accepted);
}

void SerialLine::requestDidTimeout(const Port &, const std::shared_ptr<SerialRequest> &request) {
  finish(request, End::TimedOut);
}

void SerialLine::didEncounterError(const Port &port, const Error &error) {
  log_.warn(portErrorLine(error, port->description()));
  const std::lock_guard lock(mutex_);
  lastError_ = std::make_shared<const Error>(error);
}

void SerialLine::finish(const std::shared_ptr<SerialRequest> &request, End end) {
  const std::lock_guard lock(mutex_);
  if (request != current_) return;
  end_ = end;
  changed_.notify_all();
}

}  // namespace tavril
