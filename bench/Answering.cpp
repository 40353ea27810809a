#include "bench/Answering.h"

#include <array>
#include <csignal>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <termios.h>
#include <unistd.h>

namespace tavril::bench {

Answering::Answering() {
  const int master = ::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC);
  std::array<char, 64> name{};
  if (master < 0 || ::grantpt(master) != 0 || ::unlockpt(master) != 0 ||
      ::ptsname_r(master, name.data(), name.size()) != 0) {
    throw std::runtime_error("no pseudo-terminal to be had");
  }
  path_ = QString::fromLocal8Bit(name.data());
  process_ = ::fork();
  if (process_ < 0) throw std::runtime_error("no process to be had");
  if (process_ == 0) {
    ::prctl(PR_SET_PDEATHSIG, SIGKILL);
    // Held open, so that the line is there before and between its users.
    const int slave = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios raw{};
    ::tcgetattr(slave, &raw);
    ::cfmakeraw(&raw);
    ::tcsetattr(slave, TCSANOW, &raw);
    answer(master);
  }
  ::close(master);
}

Answering::~Answering() {
  ::kill(process_, SIGKILL);
  ::waitpid(process_, nullptr, 0);
}

void Answering::answer(int master) {
  constexpr std::array<unsigned char, replySize> reply{0xFF, 7, 0x91, 8, 1, 0x2C, 0xFE};
  std::array<char, 4096> buffer;
  std::size_t got = 0;
  for (;;) {
    const ssize_t count = ::read(master, buffer.data(), buffer.size());
    if (count <= 0) std::_Exit(1);
    for (got += static_cast<std::size_t>(count); got >= commandSize; got -= commandSize) {
      if (::write(master, reply.data(), reply.size()) < 0) std::_Exit(1);
    }
  }
}

}  // namespace tavril::bench
