#pragma once

#include <grp.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavril {

/// Runs the job in a child process; its return value is the exit status. -1 when the child died otherwise.
template <typename Job>
int exitStatusOfChild(Job job) {
  const pid_t child = ::fork();
  if (child == 0) ::_exit(job());
  int status = 0;
  if (child < 0 || ::waitpid(child, &status, 0) != child || !WIFEXITED(status)) return -1;
  return WEXITSTATUS(status);
}

/// Gives up the superuser's rights for good; true as well when there were none.
inline bool becomeNobody() {
  if (::geteuid() != 0) return true;
  constexpr unsigned nobody = 65534;
  return ::setgroups(0, nullptr) == 0 && ::setgid(nobody) == 0 && ::setuid(nobody) == 0;
}

}  // namespace tavril
