#include "platform/linux/EndingSignals.h"

#include <QObject>

#include <atomic>
#include <cerrno>
#include <stop_token>
#include <utility>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tavril {

namespace {

std::atomic<int> pipeOfSignals = -1;

// Runs on any thread, between any two instructions.
void note(int signal) {
  const int error = errno;
  const auto number = static_cast<unsigned char>(signal);
  // Fails only when the pipe is full, and then there are signals enough in it.
  [[maybe_unused]] const auto written = ::write(pipeOfSignals, &number, sizeof number);
  errno = error;
}

}  // namespace

// Not by blocking the signals and a signalfd: they would stay blocked in every program that this one starts.
EndingSignals::EndingSignals() {
  std::array<int, 2> ends{};
  if (::pipe2(ends.data(), O_CLOEXEC | O_NONBLOCK) != 0) return;
  reading_ = posix::Descriptor(ends[0]);
  writing_ = posix::Descriptor(ends[1]);
  pipeOfSignals = writing_.get();
  struct sigaction action {};
  action.sa_handler = note;
  action.sa_flags = SA_RESTART;
  for (std::size_t i = 0; i < numbers.size(); ++i) {
    ::sigaction(numbers[i], nullptr, &before_[i]);
    const bool isForNohup = numbers[i] == SIGHUP && before_[i].sa_handler == SIG_IGN;
    if (!isForNohup) ::sigaction(numbers[i], &action, nullptr);
  }
}

EndingSignals::~EndingSignals() {
  if (!writing_.isOpen()) return;
  for (std::size_t i = 0; i < numbers.size(); ++i) ::sigaction(numbers[i], &before_[i], nullptr);
}

std::unique_ptr<QSocketNotifier> EndingSignals::listen(std::function<void(int signal)> act) const {
  if (!reading_.isOpen()) return nullptr;
  auto notifier = std::make_unique<QSocketNotifier>(reading_.get(), QSocketNotifier::Read);
  QObject::connect(notifier.get(), &QSocketNotifier::activated, notifier.get(),
                   [descriptor = reading_.get(), act = std::move(act)] {
                     unsigned char signal = 0;
                     if (::read(descriptor, &signal, sizeof signal) == sizeof signal) act(signal);
                   });
  return notifier;
}

std::jthread EndingSignals::watch(std::function<void(int signal)> act) const {
  if (!reading_.isOpen()) return {};
  return std::jthread([reading = reading_.get(), writing = writing_.get(),
                       act = std::move(act)](const std::stop_token &stop) {
    // No signal has the number 0.
    const std::stop_callback wake(stop, [writing] {
      const unsigned char nothing = 0;
      [[maybe_unused]] const auto written = ::write(writing, &nothing, sizeof nothing);
    });
    while (!stop.stop_requested()) {
      pollfd input{reading, POLLIN, 0};
      unsigned char signal = 0;
      if (::poll(&input, 1, -1) <= 0) continue;
      if (::read(reading, &signal, sizeof signal) == sizeof signal && signal != 0) act(signal);
    }
  });
}

}  // namespace tavril
