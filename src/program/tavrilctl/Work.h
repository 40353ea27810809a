#pragma once

namespace tavril::cli {

class Console;
class CtlObjects;
class ReadlineCommands;
struct Failure;
struct Options;
struct Plan;

/// Says what went wrong. Returns the status to exit with.
int complain(Console &console, const Failure &failure);

/// Makes the signals that end a program readable from a descriptor, so that the port can be put back first.
/// Must come before any thread is started, because threads take over which signals are blocked. -1 when there
/// is none to be had; the signals then end the program as they always do.
int endingSignals();

/// Carries the work out on a thread of its own, while the main thread carries what comes from the port.
/// `signals` is from endingSignals(), `shell` is null where no commands are typed. Returns the status to exit
/// with; throws a Failure where the port cannot be opened.
int workThrough(CtlObjects &objects, const Options &options, Console &console, const Plan &plan, int signals,
                ReadlineCommands *shell = nullptr);

/// Has the doctor examine the connection, and prints what it finds. Returns the status to exit with.
int examine(CtlObjects &objects, const Options &options, Console &console, int signals);

}  // namespace tavril::cli
