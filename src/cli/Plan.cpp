#include "cli/Plan.h"

#include "cli/Monitor.h"
#include "cli/MotionCommands.h"
#include "cli/RegisterCommands.h"
#include "cli/SendCommand.h"
#include "cli/Servo.h"
#include "cli/Session.h"
#include "cli/SettingsCommands.h"

namespace tavril::cli {

namespace {

/// Work with the one servo, which is looked for first: replies of several at once would be no replies.
Plan withServo(Plan::Work work) {
  return {[work = std::move(work)](Session &session) {
    session.servo.expectOne();
    work(session);
  }};
}

}  // namespace

Plan planFor(const Options &options, Console &console) {
  switch (options.verb) {
    case Verb::Ports:
    case Verb::Doctor:
      return {};
    case Verb::Detect:
      return {tellDetection};
    case Verb::Read: {
      const auto rows = registersNamed(options.operands);
      return withServo([rows, json = options.json](Session &session) { readRegisters(session, rows, json); });
    }
    case Verb::Write: {
      const auto assignments = assignmentsFrom(options.operands);
      if (options.dryRun) {
        showFrames(console, assignments);
        return {};
      }
      return withServo([assignments](Session &session) { writeRegisters(session, assignments); });
    }
    case Verb::Dump: {
      const QString file = options.operands.front();
      if (file != u"-") expectNewFile(file, options.force);
      return withServo([file, force = options.force](Session &session) { dump(session, file, force); });
    }
    case Verb::Restore: {
      const Settings wanted = loadSettings(options.operands.front());
      return withServo(
          [wanted, dryRun = options.dryRun](Session &session) { restore(session, wanted, dryRun); });
    }
    case Verb::Diff: {
      const Settings first = loadSettings(options.operands.front());
      const QString name = options.operands.front();
      if (options.operands.size() == 2) {
        showDifferences(console, {name, first}, {options.operands[1], loadSettings(options.operands[1])});
        return {};
      }
      return withServo([name, first](Session &session) { diffWithServo(session, {name, first}); });
    }
    case Verb::Position:
      return withServo(printPosition);
    case Verb::Move: {
      const int position = positionFrom(options.operands.front());
      return withServo(
          [position, wait = options.wait](Session &session) { moveTo(session, position, wait); });
    }
    case Verb::Release:
      return withServo([](Session &session) { session.servo.release(); });
    case Verb::Reboot:
      return withServo([](Session &session) { session.servo.reboot(); });
    case Verb::Reset:
      return withServo([](Session &session) { session.servo.restoreFactorySettings(); });
    case Verb::Monitor: {
      if (!options.csv.isEmpty()) expectNewFile(options.csv, options.force);
      return withServo([options](Session &session) { monitor(session, options); });
    }
    case Verb::Send: {
      const Command command = commandFromHex(options.operands);
      return {[command](Session &session) { sendCommand(session, command); }};
    }
  }
  return {};
}

}  // namespace tavril::cli
