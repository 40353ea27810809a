#include "doctor/PortProbe.h"

#include "terminal/LineSettings.h"

#include <QFile>

#include <algorithm>
#include <array>
#include <cerrno>
#include <span>

#include <termios.h>

namespace tavril::doctor {

namespace {

constexpr unsigned long baudRate = 115200;
constexpr tcflag_t framing = CSIZE | PARENB | CSTOPB;

using Clock = std::chrono::steady_clock;

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

CallResult PortProbe::send(const QByteArray &bytes) {
  std::span<const std::byte> left(reinterpret_cast<const std::byte *>(bytes.constData()),
                                  static_cast<std::size_t>(bytes.size()));
  while (!left.empty()) {
    const CallResult written = terminal_.write(descriptor_, left);
    if (written.failed()) return written;
    if (written.value == 0) return CallResult::failure(EAGAIN);
    left = left.subspan(static_cast<std::size_t>(written.value));
  }
  return CallResult::success();
}

PortProbe::End PortProbe::listen(Time duration, QByteArray &heard, const Rule &rule) {
  const Clock::time_point deadline = Clock::now() + duration;
  std::array<std::byte, 1024> buffer{};
  while (!cancelled_) {
    const auto left = std::max(std::chrono::ceil<Time>(deadline - Clock::now()), Time(0));
    const CallResult ready = terminal_.waitForInput(descriptor_, wake_, left);
    if (ready.failed()) return End::Gone;
    if (ready.value > 0) {
      const CallResult got = terminal_.read(descriptor_, buffer);
      // Nothing to read although something is there: that is how a line looks that was hung up.
      if (got.value == 0 || (got.failed() && got.error != EAGAIN)) return End::Gone;
      if (got.value > 0) heard.append(reinterpret_cast<const char *>(buffer.data()), got.value);
      if (rule && rule(heard)) return End::Accepted;
    }
    if (Clock::now() >= deadline) return End::TimedOut;
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
