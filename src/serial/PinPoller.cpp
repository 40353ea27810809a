#include "serial/PinPoller.h"

#include "platform/TerminalCalls.h"
#include "serial/LineSession.h"
#include "serial/PortLine.h"

#include <cerrno>
#include <utility>

namespace tavril {

PinPoller::PinPoller(TerminalCalls &calls, std::weak_ptr<PortLine> line, std::shared_ptr<LineSession> session)
    : calls_(calls), line_(std::move(line)), session_(std::move(session)) {}

void PinPoller::poll() const {
  const auto line = line_.lock();
  if (!line) return;
  const auto place = session_->takePlace({});
  if (!place) return;
  int pins = 0;
  const CallResult read = line->withDescriptor([&](int descriptor) {
    return session_->hasEnded() ? CallResult::failure(EBADF) : calls_.pins(descriptor, pins);
  });
  if (session_->hasEnded()) return;  // closed before or while we asked; close() has cancelled the poller
  if (!read.failed()) {
    line->showPins(pins);
    return;
  }
  const bool isGone = read.error == ENXIO;
  line->notifyDelegateOfPosixError(read.error, isGone, place);
  if (isGone) line->deviceHasGone(session_);
}

}  // namespace tavril
