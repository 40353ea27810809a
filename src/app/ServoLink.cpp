#include "app/ServoLink.h"

#include "app/ReplyDelivery.h"
#include "platform/Bytes.h"
#include "serial/SerialPort.h"

#include <QString>

#include <algorithm>
#include <utility>

namespace tavril {

namespace {

using Clock = std::chrono::steady_clock;
using Outcome = LinkAnswer::Outcome;

Outcome outcomeOf(LinkArbiter::Turn refusal) {
  switch (refusal) {
    case LinkArbiter::Turn::NotAllowed:
      return Outcome::NotAllowed;
    case LinkArbiter::Turn::TooSoon:
      return Outcome::TooSoon;
    default:
      return Outcome::NotServed;
  }
}

}  // namespace

// ---------------------------------------------------------------------------------------------- the editor

void ServoLink::setPort(std::shared_ptr<SerialPort> port) {
  // Dropping the observer waits for a running handler, which may itself wait for the lock.
  openingObserver_.reset();
  if (port) {
    openingObserver_ = port->observe(QStringLiteral("isOpen"), [weak = weak_from_this()](const Change &) {
      if (const auto self = weak.lock()) self->portOpenedOrClosed();
    });
  }
  {
    const std::lock_guard lock(mutex_);
    port_.swap(port);
  }
  portOpenedOrClosed();
}

std::shared_ptr<const DeliveryRule> ServoLink::deliveryRule() {
  auto rule = std::make_shared<DeliveryRule>(*replyDeliveryRule());
  rule->take = [weak = weak_from_this()](const QByteArray &delivery, LinkArbiter::Time came) {
    const auto self = weak.lock();
    return self && self->take(delivery, came);
  };
  return rule;
}

void ServoLink::send(const wire::CommandBuffer &command) {
  const std::lock_guard lock(mutex_);
  if (!port_) return;
  arbiter_.editorAsks(command, Clock::now());
  sendCommandsOfEditor();
  changed();
}

void ServoLink::setServesGuests(bool serve) {
  const std::lock_guard lock(mutex_);
  arbiter_.setServesGuests(serve);
  changed();
}

// -------------------------------------------------------------------------------------------------- guests

LinkArbiter::Guest ServoLink::admit() {
  const std::lock_guard lock(mutex_);
  return LinkArbiter::Guest{++lastGuest_};
}

bool ServoLink::claimChanges(LinkArbiter::Guest guest) {
  const std::lock_guard lock(mutex_);
  return arbiter_.claimChanges(guest);
}

void ServoLink::releaseChanges(LinkArbiter::Guest guest) {
  const std::lock_guard lock(mutex_);
  arbiter_.releaseChanges(guest);
}

bool ServoLink::stop(LinkArbiter::Guest guest, const wire::CommandBuffer &command) {
  const std::lock_guard lock(mutex_);
  return isOpen() && arbiter_.stops(guest, command, Clock::now()) && transmit(command);
}

LinkAnswer ServoLink::ask(LinkArbiter::Guest guest, const wire::CommandBuffer &command, const Until &until,
                          std::chrono::microseconds timeout, const std::stop_token &cancelled) {
  std::unique_lock lock(mutex_);
  Exchange exchange;
  LinkAnswer &answer = exchange.answer;
  answer.outcome = waitForTurn(lock, guest, command, cancelled);
  if (answer.outcome != Outcome::Sent) return answer;
  answer.sent = Clock::now();
  const bool isSent = transmit(command);
  if (arbiter_.isOpen(guest)) {
    exchange_ = &exchange;
    if (isSent) answer.outcome = waitForAnswer(lock, exchange, until, timeout, cancelled);
    // If the port was closed, another guest may have the exchange already.
    if (exchange_ == &exchange) exchange_ = nullptr;
    arbiter_.givesUp(guest, Clock::now());  // unless it was answered
  }
  if (!isSent) answer.outcome = Outcome::Closed;
  sendCommandsOfEditor();
  changed();
  return answer;
}

/// Returns `Sent` if the command is to be sent now.
Outcome ServoLink::waitForTurn(std::unique_lock<std::mutex> &lock, LinkArbiter::Guest guest,
                               const wire::CommandBuffer &command, const std::stop_token &cancelled) {
  const auto opening = openings_;
  for (;;) {
    const bool isClosed = !isOpen() || openings_ != opening;
    if (isClosed || cancelled.stop_requested()) {
      arbiter_.leaves(guest);
      changed();
      return isClosed ? Outcome::Closed : Outcome::Cancelled;
    }
    const auto now = Clock::now();
    const LinkArbiter::Turn turn = arbiter_.turnOf(guest, command, now);
    if (turn == LinkArbiter::Turn::Now) return Outcome::Sent;
    if (turn != LinkArbiter::Turn::Later) {
      changed();
      return outcomeOf(turn);
    }
    waitForChange(lock, cancelled, arbiter_.nextChange(now));
  }
}

Outcome ServoLink::waitForAnswer(std::unique_lock<std::mutex> &lock, Exchange &exchange, const Until &until,
                                 std::chrono::microseconds timeout, const std::stop_token &cancelled) {
  const LinkAnswer &answer = exchange.answer;
  const auto opening = openings_;
  // If the guest left earlier, others would send to a bridge that may still be busy.
  const auto earliestEnd = answer.sent + LinkArbiter::longestEditorWait;
  const auto end = std::max(answer.sent + timeout, earliestEnd);
  for (;;) {
    if (exchange.isAnswered) return Outcome::Answered;
    if (openings_ != opening) return Outcome::Closed;
    if (until && !answer.bytes.empty() && until(answer.bytes)) return Outcome::Answered;
    const auto now = Clock::now();
    const bool isCancelled = cancelled.stop_requested();
    if (isCancelled && now >= earliestEnd) return Outcome::Cancelled;
    if (now >= end) return Outcome::Unanswered;
    // The main thread does not wait for its commands, so this thread sends them when they have waited long
    // enough.
    sendCommandsOfEditor();
    const auto deadline = std::min(isCancelled ? earliestEnd : end, arbiter_.nextChange(now));
    waitForChange(lock, isCancelled ? std::stop_token() : cancelled, deadline);
  }
}

// ------------------------------------------------------------------------------------------------- helpers

/// Called on the reading thread.
bool ServoLink::take(const QByteArray &delivery, LinkArbiter::Time came) {
  const std::lock_guard lock(mutex_);
  const wire::Bytes bytes = asBytes(delivery);
  const auto now = Clock::now();
  const LinkArbiter::Route route = arbiter_.routeOf(bytes, came, now);
  changed();
  if (route.receiver == LinkArbiter::Receiver::Guest && exchange_) {
    exchange_->answer.bytes.insert(exchange_->answer.bytes.end(), bytes.begin(), bytes.end());
    exchange_->answer.arrived = now;
    exchange_->isAnswered = route.isAnswer;
  }
  return route.receiver != LinkArbiter::Receiver::Editor;
}

/// Called on any thread.
void ServoLink::portOpenedOrClosed() {
  const std::lock_guard lock(mutex_);
  arbiter_.forget();
  // Until a servo is detected on the new port.
  arbiter_.setServesGuests(false);
  ++openings_;
  changed();
}

bool ServoLink::isOpen() const {
  return port_ && port_->isOpen();
}

bool ServoLink::transmit(const wire::CommandBuffer &command) {
  return port_ && port_->sendData(toByteArray(command));
}

void ServoLink::sendCommandsOfEditor() {
  while (const auto command = arbiter_.nextOfEditor(Clock::now())) transmit(*command);
}

void ServoLink::changed() {
  ++changes_;
  changed_.notify_all();
}

void ServoLink::waitForChange(std::unique_lock<std::mutex> &lock, const std::stop_token &cancelled,
                              LinkArbiter::Time deadline) {
  changed_.wait_until(lock, cancelled, deadline, [this, seen = changes_] { return changes_ != seen; });
}

}  // namespace tavril
