#include "serial/ReadLoop.h"

#include "serial/DeliveryRule.h"
#include "serial/LineSession.h"
#include "serial/PortLine.h"
#include "terminal/TerminalCalls.h"

#include <algorithm>
#include <array>
#include <chrono>
#include <cstddef>
#include <span>
#include <utility>

namespace tavril {

namespace {

using Clock = std::chrono::steady_clock;

constexpr std::chrono::milliseconds inputTimeout{100};

}  // namespace

ReadLoop::ReadLoop(TerminalCalls &calls, std::weak_ptr<PortLine> line, std::shared_ptr<LineSession> session,
                   std::shared_ptr<const DeliveryRule> rule)
    : calls_(calls),
      line_(std::move(line)),
      session_(std::move(session)),
      rule_(std::move(rule)),
      assembler_(rule_) {}

void ReadLoop::run() {
  while (!session_->hasEnded()) {
    if (session_->isClosing()) {  // keep out of the way of close(), which wants the semaphore
      session_->pause(inputTimeout);
      continue;
    }
    const auto line = line_.lock();
    if (!line) return;
    if (!readOnce(*line)) session_->pause(inputTimeout);
  }
}

/// One delivery from what was read before, or else one wait for input and one read. False when nothing can
/// come for a while: the line is hung up (which counts as readable for ever) or the wait itself fails, and
/// the loop must not spin.
bool ReadLoop::readOnce(PortLine &line) {
  const auto slot = session_->takeBackpressureSlot(inputTimeout);
  if (!slot) return true;
  if (deliverNext(line, slot)) return true;

  const CallResult ready = waitForInput(line);
  if (session_->hasEnded()) return true;
  if (ready.failed()) {
    line.notifyDelegateOfPosixError(ready.error, false, slot);
    return false;
  }
  if (ready.value == 0) {
    // Only now: what has come by the end of the time counts, even if this thread had no time to read it.
    const bool isOver = assembler_.isWaiting() && assembler_.timeLeft(Clock::now()).count() == 0;
    if (isOver && !session_->isClosing()) deliverFirstRead(line, slot);
    return true;
  }

  std::array<std::byte, DeliveryAssembler::largestDelivery> buffer;
  const CallResult got = line.withDescriptor([&](int descriptor) {
    // The port may have been opened anew in the meantime: its bytes belong to the new session's loop.
    return session_->hasEnded() ? CallResult::success()
                                : calls_.read(descriptor, std::span(buffer).first(assembler_.room()));
  });
  if (got.value <= 0) {  // Kept: C54.
    // The rest will not come from a line like this. What else is held comes out in the next rounds.
    if (!assembler_.isWaiting() || session_->isClosing()) return false;
    deliverFirstRead(line, slot);
    return true;
  }
  assembler_.add(std::span(buffer).first(static_cast<std::size_t>(got.value)), Clock::now());
  deliverNext(line, slot);
  return true;
}

CallResult ReadLoop::waitForInput(PortLine &line) const {
  auto timeout = inputTimeout;
  if (assembler_.isWaiting()) timeout = std::min(timeout, assembler_.timeLeft(Clock::now()));
  if (!line.selectSemaphore().tryAcquireFor(inputTimeout)) return CallResult::success();
  const CallResult ready =
      session_->hasEnded() ? CallResult::success()
                           : calls_.waitForInput(session_->descriptor(), session_->wakeDescriptor(), timeout);
  line.selectSemaphore().release();
  return ready;
}

bool ReadLoop::deliverNext(PortLine &line, const BackpressureSlot &slot) {
  if (!assembler_.isWaiting()) return false;
  const auto came = assembler_.firstCame();
  const auto delivery = assembler_.next();
  if (delivery) deliver(line, *delivery, came, slot);
  return delivery.has_value();
}

void ReadLoop::deliverFirstRead(PortLine &line, const BackpressureSlot &slot) {
  const auto came = assembler_.firstCame();
  deliver(line, assembler_.takeFirstRead(), came, slot);
}

void ReadLoop::deliver(PortLine &line, const QByteArray &delivery, DeliveryAssembler::Time came,
                       const BackpressureSlot &slot) {
  if (rule_ && rule_->take && rule_->take(delivery, came)) return;
  line.receiveData(delivery, slot);
}

}  // namespace tavril
