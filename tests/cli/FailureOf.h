#pragma once

#include "cli/Failure.h"

#include <functional>

namespace tavril::cli {

/// The failure with which this ends; one of the code Done when it does not fail.
inline Failure failureOf(const std::function<void()> &act) {
  try {
    act();
  } catch (const Failure &failure) {
    return failure;
  }
  return {ExitCode::Done, {}};
}

}  // namespace tavril::cli
