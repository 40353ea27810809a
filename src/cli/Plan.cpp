#include "cli/Plan.h"

#include "cli/Console.h"
#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/Monitor.h"
#include "cli/MotionCommands.h"
#include "cli/RegisterCommands.h"
#include "cli/RegisterFacts.h"
#include "cli/Script.h"
#include "cli/SendCommand.h"
#include "cli/Session.h"
#include "cli/SettingsCommands.h"
#include "servo/Servo.h"

#include <QStringList>

#include <memory>
#include <utility>

namespace tavril::cli {

namespace {

/// Work with the one servo, which is looked for first: replies of several at once would be no replies.
Plan withServo(Plan::Work work) {
  return {[work = std::move(work)](Session &session) {
    session.expect(session.servo.expectOne());
    work(session);
  }};
}

WriteMode writeMode(const Options &options) {
  return {.dryRun = options.dryRun, .force = options.force, .json = options.json};
}

Settings settingsIn(const QString &file, Console &console) {
  const LoadedSettings loaded = loadSettings(file);
  for (const QString &remark : loaded.remarks) console.note(remark);
  return loaded.settings;
}

Settings withoutExcepted(Settings settings, const QStringList &keys) {
  if (keys.isEmpty()) return settings;
  for (const wire::Register *row : registersNamed(keys)) settings.erase(row->number);
  return settings;
}

Plan planWrite(const Options &options, Console &console) {
  const auto assignments = assignmentsFrom(options.operands);
  const WriteMode mode = writeMode(options);
  Settings wanted;
  for (const auto &[row, value] : assignments) wanted[row->number] = value;
  if (mode.dryRun) {
    judge(console, wanted, {}, true);
    showFrames(console, assignments, mode.json);
    return {};
  }
  // What may hurt whatever the servo holds is told before the port is opened.
  if (!mode.force) judge(console, wanted, {}, false);
  return withServo([assignments, mode](Session &session) { writeRegisters(session, assignments, mode); });
}

Plan planSetId(const Options &options, Console &console) {
  const wire::Register &row = *wire::findRegister(wire::RegisterNumber::ServoId);
  const Assignment id{&row, settingFrom(row, options.operands.front())};
  const WriteMode mode = writeMode(options);
  if (mode.dryRun) {
    showFrames(console, {id}, mode.json);
    return {};
  }
  return withServo([id, mode](Session &session) { setServoId(session, id, mode); });
}

}  // namespace

Plan planFor(const Options &options, Console &console) {
  const bool json = options.json;
  switch (options.verb) {
    case Verb::Ports:
    case Verb::Doctor:
    case Verb::Shell:
      return {};
    case Verb::Detect:
      return {[json](Session &session) { tellDetection(session, json); }};
    case Verb::Read: {
      const auto rows = registersNamed(options.operands);
      return withServo([rows, json](Session &session) { readRegisters(session, rows, json); });
    }
    case Verb::Write:
      return planWrite(options, console);
    case Verb::SetId:
      return planSetId(options, console);
    case Verb::Dump: {
      const QString file = options.operands.front();
      if (file != u"-") expectNewFile(file, options.force);
      return withServo([file, force = options.force](Session &session) { dump(session, file, force); });
    }
    case Verb::Restore: {
      const Settings wanted = withoutExcepted(settingsIn(options.operands.front(), console), options.except);
      return withServo(
          [wanted, mode = writeMode(options)](Session &session) { restore(session, wanted, mode); });
    }
    case Verb::Diff: {
      const QString name = options.operands.front();
      const Settings first = settingsIn(name, console);
      if (options.operands.size() == 2) {
        showDifferences(console, {name, first},
                        {options.operands[1], settingsIn(options.operands[1], console)}, json);
        return {};
      }
      return withServo([name, first, json](Session &session) {
        diffWithServo(session, {name, first}, json);
      });
    }
    case Verb::Position:
      return withServo([json](Session &session) { printPosition(session, json); });
    case Verb::Move: {
      const int position = positionFrom(options.operands.front());
      return withServo(
          [position, wait = options.wait, json](Session &session) { moveTo(session, position, wait, json); });
    }
    case Verb::Stop:
      return withServo([json](Session &session) { stopMoving(session, json); });
    case Verb::Release:
      return withServo([](Session &session) { session.expect(session.servo.release()); });
    case Verb::Reboot:
      return withServo([](Session &session) { session.expect(session.servo.reboot()); });
    case Verb::Reset:
      return withServo([](Session &session) { session.expect(session.servo.restoreFactorySettings()); });
    case Verb::Monitor: {
      if (!options.csv.isEmpty() && options.csv != u"-") expectNewFile(options.csv, options.force);
      return withServo([options](Session &session) { monitor(session, options); });
    }
    case Verb::Send: {
      const wire::Command command = commandFromHex(options.operands);
      expectConfirmed(command, options.yes);
      return {[command, json](Session &session) { sendCommand(session, command, json); }};
    }
    case Verb::Run: {
      const std::shared_ptr<CommandSource> source = commandsIn(options.operands.front());
      return {[source, keepGoing = options.keepGoing](Session &session) {
        runCommands(session, *source, keepGoing);
      }};
    }
  }
  return {};
}

}  // namespace tavril::cli
