#pragma once

#include "cli/Options.h"

#include <QString>

#include <functional>

namespace tavril::cli {

class Console;
struct Session;

/// A command, read and checked as far as that can be done without a servo, and ready to be carried out. What
/// it does throws a Failure when it fails.
struct Plan {
  using Work = std::function<void(Session &)>;

  /// Nothing for a command that is already done without a port.
  Work work;
};

/// Checks what the command was given, whole, before anything is sent, and carries out at once what needs no
/// port. Throws a Failure. All but `ports`, `doctor` and `shell`, which need the machine.
Plan planFor(const Options &options, Console &console);

}  // namespace tavril::cli
