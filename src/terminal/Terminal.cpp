#include "terminal/Terminal.h"

#include <algorithm>
#include <cerrno>
#include <system_error>

namespace tavril {

bool TerminalError::isGone() const {
  return number == ENXIO || number == EIO || number == ENODEV;
}

std::string TerminalError::text() const {
  return tried + ": " + std::generic_category().message(number);
}

Terminal::Terminal(TerminalCalls &calls) : calls_(calls) {
  takeover_.settings.allowsNonStandardBaudRates = true;
  takeover_.settings.usesLowLatency = true;
}

Terminal::~Terminal() {
  close();
}

Terminal::Failure Terminal::failed(const char *tried, int number) const {
  return TerminalError{std::string(tried) + " " + path_, number};
}

Terminal::Failure Terminal::open(const std::string &path, unsigned long baudRate) {
  close();
  path_ = path;
  const CallResult opened = LineTakeover::openExclusively(calls_, path);
  if (opened.failed()) return failed("open", opened.error);
  {
    const std::lock_guard lock(mutex_);
    descriptor_ = static_cast<int>(opened.value);
    calls_.clearStatusFlags(descriptor_);  // a line that does not block only makes write() fail earlier
    wake_ = std::make_unique<WakeDescriptor>(calls_);
    cancelled_ = false;
  }
  takeover_.forget();
  takeover_.settings.baudRate = baudRate;
  for (const auto step : LineTakeover::steps) {
    const CallResult made = (takeover_.*step)(descriptor_);
    if (!made.failed()) continue;
    close();
    return failed("set up", made.error);
  }
  return {};
}

Terminal::Failure Terminal::write(std::span<const std::byte> bytes) {
  if (!isOpen()) return failed("write to", EBADF);
  const CallResult written = writeAll(bytes, [this](std::span<const std::byte> left) {
    return cancelled_ ? CallResult::failure(ECANCELED) : calls_.write(descriptor_, left);
  });
  if (!written.failed()) return {};
  return failed("write to", cancelled_ && written.error == EAGAIN ? ECANCELED : written.error);
}

Terminal::Input Terminal::read(std::span<std::byte> buffer, Clock::time_point deadline) {
  using std::chrono::microseconds;
  if (!isOpen()) return {0, Clock::now(), failed("read from", EBADF)};
  while (!cancelled_) {
    const auto left = std::max(std::chrono::ceil<microseconds>(deadline - Clock::now()), microseconds(0));
    const CallResult ready = calls_.waitForInput(descriptor_, wake_->get(), left);
    const auto came = Clock::now();
    if (ready.failed()) return {0, came, failed("wait for", ready.error)};
    if (ready.value > 0) {
      const CallResult got = calls_.read(descriptor_, buffer);
      if (got.value > 0) return {static_cast<std::size_t>(got.value), came, {}};
      // Input that is announced and cannot be read is how a line looks that was hung up.
      if (got.value == 0) return {0, came, failed("read from", ENXIO)};
      if (got.error != EAGAIN) return {0, came, failed("read from", got.error)};
    }
    if (came >= deadline) break;
  }
  return {};
}

void Terminal::cancel() {
  const std::lock_guard lock(mutex_);
  if (!isOpen() || isClosing_) return;
  cancelled_ = true;
  calls_.stopBlocking(descriptor_);
  wake_->wake();
}

Terminal::Failure Terminal::close() {
  if (!isOpen()) return {};
  {
    const std::lock_guard lock(mutex_);
    isClosing_ = true;
  }
  takeover_.giveBack(descriptor_);
  const std::lock_guard lock(mutex_);
  isClosing_ = false;
  const CallResult closed = LineTakeover::release(calls_, descriptor_);
  descriptor_ = 0;
  wake_.reset();
  return closed.failed() ? failed("close", closed.error) : Failure();
}

}  // namespace tavril
