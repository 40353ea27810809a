#pragma once

#include "cli/Options.h"

namespace tavril::cli {

struct Session;

/// Prints the live values again and again, until the count is reached or the user stops it. A sample that got
/// no answer is left out; when three in a row got none, throws a Failure.
void monitor(Session &session, const Options &options);

}  // namespace tavril::cli
