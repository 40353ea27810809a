#include "platform/linux/StandardStreams.h"

#include <csignal>
#include <initializer_list>

#include <fcntl.h>
#include <unistd.h>

namespace tavril {

void secureStandardStreams() {
  for (const int stream : {STDIN_FILENO, STDOUT_FILENO, STDERR_FILENO}) {
    if (::fcntl(stream, F_GETFD) >= 0) continue;
    // The lowest free number is this one, for those below are taken. Opened the wrong way round, so that its
    // use fails as it would have without.
    const int descriptor = ::open("/dev/null", stream == STDIN_FILENO ? O_WRONLY : O_RDONLY);
    if (descriptor > STDERR_FILENO) ::close(descriptor);
  }
  std::signal(SIGPIPE, SIG_IGN);
}

}  // namespace tavril
