#pragma once

namespace tavril {
class EndingSignals;
}

namespace tavril::cli {

class Console;
class CtlObjects;
class ReadlineCommands;
struct Failure;
struct Options;
struct Plan;

/// Says what went wrong. Returns the status to exit with.
int complain(Console &console, const Failure &failure);

/// Carries the work out on a thread of its own, while the main thread carries what comes from the port.
/// The work ends at a signal of `signals`, if it is given. `shell` is null where no commands are typed.
/// Returns the status to exit with; throws a Failure where the port cannot be opened.
int workThrough(CtlObjects &objects, const Options &options, Console &console, const Plan &plan,
                const EndingSignals *signals, ReadlineCommands *shell = nullptr);

/// Has the doctor examine the connection, and prints what it finds. Returns the status to exit with.
int examine(CtlObjects &objects, const Options &options, Console &console, const EndingSignals *signals);

}  // namespace tavril::cli
