#include "serial/ReadLoop.h"

#include "platform/TerminalCalls.h"
#include "serial/LineSession.h"
#include "serial/PortLine.h"

#include <array>
#include <chrono>
#include <cstddef>
#include <utility>

namespace tavril {

namespace {

constexpr std::chrono::milliseconds inputTimeout{100};
constexpr std::size_t largestRead = 1024;

}  // namespace

ReadLoop::ReadLoop(TerminalCalls &calls, std::weak_ptr<PortLine> line, std::shared_ptr<LineSession> session)
    : calls_(calls), line_(std::move(line)), session_(std::move(session)) {}

void ReadLoop::run() const {
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

/// One wait for input and one read. False when nothing can come for a while: the line is hung up (which
/// counts as readable for ever) or the wait itself fails, and the loop must not spin.
bool ReadLoop::readOnce(PortLine &line) const {
  const auto place = session_->takePlace(inputTimeout);
  if (!place) return true;
  if (!line.selectSemaphore().try_acquire_for(inputTimeout)) return true;
  const CallResult ready =
      session_->hasEnded()
          ? CallResult::success()
          : calls_.waitForInput(session_->descriptor(), session_->wakeDescriptor(), inputTimeout);
  line.selectSemaphore().release();
  if (session_->hasEnded()) return true;
  if (ready.failed()) {
    line.notifyDelegateOfPosixError(ready.error, false, place);
    return false;
  }
  if (ready.value == 0) return true;

  std::array<std::byte, largestRead> buffer;
  const CallResult got = line.withDescriptor([&](int descriptor) {
    // The port may have been opened anew in the meantime: its bytes belong to the new session's loop.
    return session_->hasEnded() ? CallResult::success() : calls_.read(descriptor, buffer);
  });
  if (got.value <= 0) return false;
  line.receiveData(QByteArray(reinterpret_cast<const char *>(buffer.data()), got.value), place);
  return true;
}

}  // namespace tavril
