#pragma once

#include "tests/support/Pty.h"

#include <array>
#include <atomic>
#include <functional>
#include <thread>
#include <utility>

namespace tavril {

/// The other side of the wire, on a thread of its own: says what the function makes of what came.
class Responder {
 public:
  using Reply = std::function<QByteArray(const QByteArray &came)>;

  Responder(const Pty &pty, Reply reply)
      : master_(::dup(pty.master())), reply_(std::move(reply)), thread_([this] { run(); }) {}
  ~Responder() {
    stop_ = true;
    thread_.join();
    ::close(master_);
  }
  Responder(const Responder &) = delete;
  Responder &operator=(const Responder &) = delete;

 private:
  void run() {
    ::fcntl(master_, F_SETFL, O_NONBLOCK);
    while (!stop_) {
      pollfd master{master_, POLLIN, 0};
      if (::poll(&master, 1, 5) <= 0) continue;
      std::array<char, 256> buffer{};
      const ssize_t got = ::read(master_, buffer.data(), buffer.size());
      if (got <= 0) {
        std::this_thread::yield();
        continue;
      }
      const QByteArray said = reply_(QByteArray(buffer.data(), got));
      [[maybe_unused]] const auto put =
          ::write(master_, said.constData(), static_cast<std::size_t>(said.size()));
    }
  }

  const int master_;
  const Reply reply_;
  std::atomic<bool> stop_ = false;
  std::thread thread_;
};

}  // namespace tavril
