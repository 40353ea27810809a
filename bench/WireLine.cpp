#include "bench/WireLine.h"

#include <algorithm>
#include <array>
#include <stdexcept>
#include <vector>

#include <fcntl.h>
#include <poll.h>
#include <sys/prctl.h>
#include <termios.h>
#include <unistd.h>

namespace tavril::bench {

namespace {

/// Waits end so much early, and the rest is spun away: the kernel's are late by about as much.
constexpr std::chrono::microseconds spun{150};
constexpr std::chrono::milliseconds longestSleep{50};

}  // namespace

WireLine::WireLine(Nanoseconds timer) : timer_(timer) {
  openTerminal();
  endpoint_.plugIn();
  thread_ = std::thread([this] { serve(); });
}

WireLine::~WireLine() {
  stopping_ = true;
  thread_.join();
}

void WireLine::openTerminal() {
  master_ = simulator::FileDescriptor(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC | O_NONBLOCK));
  std::array<char, 64> name{};
  if (!master_.valid() || ::grantpt(master_.get()) != 0 || ::unlockpt(master_.get()) != 0 ||
      ::ptsname_r(master_.get(), name.data(), name.size()) != 0) {
    throw std::runtime_error("no pseudo-terminal to be had");
  }
  path_ = QString::fromLocal8Bit(name.data());
  slave_ = simulator::FileDescriptor(::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC));
  termios raw{};
  ::tcgetattr(slave_.get(), &raw);
  ::cfmakeraw(&raw);
  ::tcsetattr(slave_.get(), TCSANOW, &raw);
}

void WireLine::serve() {
  ::prctl(PR_SET_TIMERSLACK, 1);
  while (!stopping_) {
    waitFor(nextEvent());
    const auto now = Clock::now();
    takeIn(now);
    carryOut(now);
    handOver(now);
  }
}

void WireLine::takeIn(Clock::time_point now) {
  std::array<std::uint8_t, 4096> buffer;
  const ssize_t count = ::read(master_.get(), buffer.data(), buffer.size());
  for (ssize_t i = 0; i < count; ++i) {
    toServoFree_ = std::max(toServoFree_, now) + byteTime;
    toServo_.push_back({toServoFree_, buffer[static_cast<std::size_t>(i)]});
  }
}

/// The servo gets what is through, and its reply, which it makes in no time, begins to travel.
void WireLine::carryOut(Clock::time_point now) {
  while (!toServo_.empty() && toServo_.front().at <= now) {
    const Byte byte = toServo_.front();
    toServo_.pop_front();
    endpoint_.advance(byte.at - lastAdvance_);
    lastAdvance_ = byte.at;
    endpoint_.receive(std::span(&byte.value, 1));
    // The wire is busy with the filling of the command when the reply could go; the bridge waits for its end.
    while (const auto reply = endpoint_.takeDelivery()) {
      for (const std::uint8_t value : *reply) toHost_.push_back({{}, value});
    }
    if (!toServo_.empty()) continue;
    for (Byte &waiting : toHost_) {
      if (waiting.at != Clock::time_point{}) continue;
      toHostFree_ = std::max(toHostFree_, byte.at) + byteTime;
      waiting.at = toHostFree_;
    }
  }
}

void WireLine::handOver(Clock::time_point now) {
  if (toHost_.empty() || handOverTime() > now) return;
  const auto cut = timer_.load().count() > 0 ? handOverTime() : now;
  std::vector<std::uint8_t> bytes;
  while (!toHost_.empty() && toHost_.front().at <= cut && toHost_.front().at != Clock::time_point{}) {
    bytes.push_back(toHost_.front().value);
    toHost_.pop_front();
  }
  if (::write(master_.get(), bytes.data(), bytes.size()) < 0) throw std::runtime_error("nobody reads");
}

/// When the adapter hands over the first bytes of what is on its way.
WireLine::Clock::time_point WireLine::handOverTime() const {
  if (toHost_.front().at == Clock::time_point{}) return Clock::time_point::max();
  const Nanoseconds timer = timer_;
  if (timer.count() == 0) return toHost_.back().at;
  const auto ticks = (toHost_.front().at - begin_ + timer - Nanoseconds(1)) / timer;
  return begin_ + ticks * timer;
}

WireLine::Clock::time_point WireLine::nextEvent() const {
  auto next = Clock::now() + longestSleep;
  if (!toServo_.empty()) next = std::min(next, toServo_.back().at);
  if (!toHost_.empty()) next = std::min(next, handOverTime());
  return next;
}

/// Until then, or until the host sends.
void WireLine::waitFor(Clock::time_point due) const {
  pollfd watched{master_.get(), POLLIN, 0};
  const auto sleep = std::chrono::duration_cast<Nanoseconds>(due - spun - Clock::now()).count();
  if (sleep > 0) {
    const timespec timeout{static_cast<time_t>(sleep / 1'000'000'000),
                           static_cast<long>(sleep % 1'000'000'000)};
    if (::ppoll(&watched, 1, &timeout, nullptr) > 0) return;
  }
  while (Clock::now() < due) {
  }
}

}  // namespace tavril::bench
