#include "doctor/PortProbe.h"

#include "terminal/LineSettings.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>
#include <cstddef>
#include <cstdint>
#include <span>

#include <termios.h>

namespace tavril::doctor {

namespace {

constexpr unsigned long baudRate = 115200;
constexpr tcflag_t framing = CSIZE | PARENB | CSTOPB;

using End = servo::Received::End;

}  // namespace

PortProbe::PortProbe(TerminalCalls &terminal) : terminal_(terminal) {
  const CallResult wake = terminal_.openWake();
  if (!wake.failed()) wake_ = static_cast<int>(wake.value);
}

PortProbe::~PortProbe() {
  close();
  if (wake_ >= 0) terminal_.closeWake(wake_);
}

CallResult PortProbe::open(const QString &path) {
  const CallResult opened = terminal_.open(QFile::encodeName(path).toStdString());
  if (opened.failed()) return opened;
  descriptor_ = static_cast<int>(opened.value);
  const CallResult locked = terminal_.lock(descriptor_);
  locked_ = !locked.failed();
  if (!locked_) close();
  return locked;
}

CallResult PortProbe::takeSettings() {
  termios attributes{};
  if (const CallResult read = terminal_.attributes(descriptor_, attributes); read.failed()) return read;
  original_ = std::make_unique<termios>(attributes);
  LineSettings settings;
  settings.baudRate = baudRate;
  applyLineSettings(attributes, settings);
  if (const CallResult set = terminal_.setSpeed(attributes, baudRate); set.failed()) return set;
  if (const CallResult set = terminal_.setFlowControl(attributes, settings.flowControl); set.failed())
    return set;
  if (const CallResult set = terminal_.setAttributes(descriptor_, WhenToApply::Now, attributes); set.failed())
    return set;
  // The system is content when any of the settings was taken.
  termios taken{};
  if (const CallResult read = terminal_.attributes(descriptor_, taken); read.failed()) return read;
  const bool isTaken = cfgetospeed(&taken) == cfgetospeed(&attributes) &&
                       (taken.c_cflag & framing) == (attributes.c_cflag & framing);
  return isTaken ? CallResult::success() : CallResult::failure(EINVAL);
}

servo::Received PortProbe::request(wire::Bytes data, servo::Time timeout, Rule rule) {
  servo::Received received;
  received.sentAt = now();
  const std::optional<End> failure = send(data);
  received.end = failure ? *failure : listen(timeout, received, rule);
  return received;
}

servo::Received::End PortProbe::pause(servo::Time duration) {
  servo::Received passing;
  return listen(duration, passing, [](wire::Bytes) { return false; });
}

servo::Time PortProbe::now() const {
  return std::chrono::duration_cast<servo::Time>(std::chrono::steady_clock::now().time_since_epoch());
}

/// Hands over all bytes. Returns how that ended if it failed.
std::optional<End> PortProbe::send(wire::Bytes bytes) {
  std::span<const std::byte> left = std::as_bytes(bytes);
  while (!left.empty()) {
    const CallResult written = terminal_.write(descriptor_, left);
    if (written.failed()) return written.error == EAGAIN ? End::NotTaken : End::Gone;
    if (written.value == 0) return End::NotTaken;
    left = left.subspan(static_cast<std::size_t>(written.value));
  }
  return std::nullopt;
}

/// Adds what comes until the rule accepts it or the time is over.
End PortProbe::listen(servo::Time duration, servo::Received &received, const Rule &rule) {
  using std::chrono::milliseconds;
  const servo::Time deadline = now() + duration;
  std::array<std::byte, 1024> buffer{};
  while (!cancelled_) {
    const auto left = std::max(std::chrono::ceil<milliseconds>(deadline - now()), milliseconds(0));
    const CallResult ready = terminal_.waitForInput(descriptor_, wake_, left);
    if (ready.failed()) return End::Gone;
    if (ready.value > 0) {
      const CallResult got = terminal_.read(descriptor_, buffer);
      // Nothing to read although something is there: that is how a line looks that was hung up.
      if (got.value == 0 || (got.failed() && got.error != EAGAIN)) return End::Gone;
      if (got.value > 0) {
        const auto *bytes = reinterpret_cast<const std::uint8_t *>(buffer.data());
        received.bytes.insert(received.bytes.end(), bytes, bytes + got.value);
        received.arrivedAt = now();
      }
      if (rule(received.bytes)) return End::Accepted;
    }
    if (now() >= deadline) return End::TimedOut;
  }
  return End::Cancelled;
}

void PortProbe::cancel() {
  cancelled_ = true;
  if (wake_ >= 0) terminal_.wake(wake_);
}

void PortProbe::close() {
  if (!isOpen()) return;
  if (original_) terminal_.setAttributes(descriptor_, WhenToApply::Now, *original_);
  if (locked_) terminal_.unlock(descriptor_);
  terminal_.close(descriptor_);
  descriptor_ = -1;
  locked_ = false;
  original_.reset();
}

}  // namespace tavril::doctor
