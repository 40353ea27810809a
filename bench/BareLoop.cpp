// The limit: one thread, three system calls a trip.
#include "bench/Answering.h"
#include "bench/Contender.h"

#include <array>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tavril::bench {

namespace {

class BareLoop final : public Contender {
 public:
  explicit BareLoop(const QString &path)
      : terminal_(::open(qPrintable(path), O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (terminal_ < 0) throw std::runtime_error("the terminal cannot be opened");
  }
  ~BareLoop() override { ::close(terminal_); }

  void run(int trips) override {
    const std::array<char, Answering::commandSize> command{};
    std::array<char, 1024> buffer;
    pollfd watched{terminal_, POLLIN, 0};
    for (int trip = 0; trip < trips; ++trip) {
      if (::write(terminal_, command.data(), command.size()) < 0) throw std::runtime_error("write");
      for (std::size_t got = 0; got < Answering::replySize;) {
        ::poll(&watched, 1, -1);
        const ssize_t count = ::read(terminal_, buffer.data(), buffer.size());
        if (count <= 0) throw std::runtime_error("read");
        got += static_cast<std::size_t>(count);
      }
    }
  }

 private:
  int terminal_;
};

}  // namespace

std::unique_ptr<Contender> bareLoop(const QString &path) {
  return std::make_unique<BareLoop>(path);
}

}  // namespace tavril::bench
