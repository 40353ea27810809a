#pragma once

#include <cstdio>
#include <cstdlib>

namespace tavril {

/// Ends the program when what a fuzz target claims does not hold, which is a find for libFuzzer and a failed
/// test for the replay.
inline void mustHold(bool claim, const char *words) {
  if (claim) return;
  std::fprintf(stderr, "Does not hold: %s\n", words);
  std::abort();
}

}  // namespace tavril
