#pragma once

#include "cli/Failure.h"
#include "servo/Problem.h"

#include <QString>

namespace tavril::cli {

/// What to exit with where the bridge has reported this error.
ExitCode exitCodeOf(int error);

/// What to say of the problem, and what to exit with.
Failure failureFrom(const servo::Problem &problem, const QString &portName);

}  // namespace tavril::cli
