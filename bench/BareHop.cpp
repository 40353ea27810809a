// The limit for who reads on a thread of his own: the bare loop, whose reader wakes the sender through a
// descriptor.
#include "bench/Answering.h"
#include "bench/Contender.h"

#include <array>
#include <cstdint>
#include <stdexcept>
#include <thread>

#include <fcntl.h>
#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

namespace tavril::bench {

namespace {

class BareHop final : public Contender {
 public:
  explicit BareHop(const QString &path)
      : terminal_(::open(qPrintable(path), O_RDWR | O_NOCTTY | O_CLOEXEC)),
        arrived_(::eventfd(0, EFD_CLOEXEC)),
        stopping_(::eventfd(0, EFD_CLOEXEC)) {
    if (terminal_ < 0 || arrived_ < 0 || stopping_ < 0) throw std::runtime_error("open");
    reader_ = std::thread([this] { read(); });
  }
  ~BareHop() override {
    tell(stopping_);
    reader_.join();
    for (const int descriptor : {terminal_, arrived_, stopping_}) ::close(descriptor);
  }

  void run(int trips) override {
    const std::array<char, Answering::commandSize> command{};
    pollfd watched{arrived_, POLLIN, 0};
    for (int trip = 0; trip < trips; ++trip) {
      if (::write(terminal_, command.data(), command.size()) < 0) throw std::runtime_error("write");
      ::poll(&watched, 1, -1);
      std::uint64_t count = 0;
      if (::read(arrived_, &count, sizeof count) < 0) throw std::runtime_error("read");
    }
  }

 private:
  static void tell(int descriptor) {
    const std::uint64_t one = 1;
    if (::write(descriptor, &one, sizeof one) < 0) std::terminate();
  }

  void read() {
    std::array<char, 1024> buffer;
    std::array<pollfd, 2> watched{{{terminal_, POLLIN, 0}, {stopping_, POLLIN, 0}}};
    std::size_t got = 0;
    for (;;) {
      ::poll(watched.data(), watched.size(), -1);
      if (watched[1].revents != 0) return;
      const ssize_t count = ::read(terminal_, buffer.data(), buffer.size());
      if (count <= 0) std::terminate();
      got += static_cast<std::size_t>(count);
      if (got < Answering::replySize) continue;
      got = 0;
      tell(arrived_);
    }
  }

  const int terminal_;
  const int arrived_;
  const int stopping_;
  std::thread reader_;
};

}  // namespace

std::unique_ptr<Contender> bareHop(const QString &path) {
  return std::make_unique<BareHop>(path);
}

}  // namespace tavril::bench
