#include "records/HistoryJournal.h"

#include "wire/Registers.h"

#include <cstddef>
#include <set>
#include <utility>
#include <variant>
#include <vector>

namespace tavril::records {

namespace {

/// A line of a plan cannot be appended later, so it waits longer for other programs than other lines do.
constexpr std::chrono::seconds patience(10);

using servo::PlanEnding;
using servo::PlanReason;
using servo::PlanReport;
using servo::Problem;
using servo::Settings;

PlanOutcome outcomeOf(PlanEnding ending) {
  switch (ending) {
    case PlanEnding::NotBegun:
      return PlanOutcome::NotBegun;
    case PlanEnding::Done:
      return PlanOutcome::Done;
    case PlanEnding::DonePolicyNotConfirmed:
      return PlanOutcome::DonePolicyNotConfirmed;
    case PlanEnding::Cancelled:
      return PlanOutcome::Cancelled;
    case PlanEnding::RolledBack:
      return PlanOutcome::RolledBack;
    case PlanEnding::RolledBackInPart:
      return PlanOutcome::RolledBackInPart;
    case PlanEnding::Unknown:
      break;
  }
  return PlanOutcome::Unknown;
}

RawSettings rawOf(const Settings &settings) {
  RawSettings raw{};
  for (const auto &[number, value] : settings) raw.at(static_cast<std::size_t>(number) - 1) = value;
  return raw;
}

/// The keys of registers are ASCII.
std::string keyOf(int number) {
  const auto name = wire::findRegister(number)->keys.name;
  return {name.begin(), name.end()};
}

std::string keysOf(const std::vector<int> &numbers) {
  std::string keys;
  for (const int number : numbers) keys += (keys.empty() ? "" : ", ") + keyOf(number);
  return keys;
}

std::string problemInWords(const Problem &problem) {
  switch (problem.kind) {
    case Problem::Kind::NotOneServo:
      return problem.count == servo::Count::None ? "no servo" : "several servos";
    case Problem::Kind::ErrorReport:
      return "error " + std::to_string(problem.error);
    case Problem::Kind::Cancelled:
      return "cancelled";
    case Problem::Kind::Gone:
      return "the port is gone";
    case Problem::Kind::NotTaken:
      return "the adapter takes nothing";
    default:
      return "no answer";
  }
}

std::string reasonInWords(const PlanReport &report) {
  switch (report.reason) {
    case PlanReason::NotKept:
      return "not kept: " + keysOf(report.numbers);
    case PlanReason::Refused:
      return "refused: " + keysOf(report.numbers);
    case PlanReason::Different:
      return "not as reviewed: " + keysOf(report.numbers);
    case PlanReason::Cancelled:
      return "cancelled";
    default:
      return report.problem ? problemInWords(*report.problem) : std::string();
  }
}

std::string valuesInWords(const std::set<int> &values) {
  std::string words;
  for (const int value : values) words += (words.empty() ? "" : " or ") + std::to_string(value);
  return words;
}

}  // namespace

std::string detailOf(const PlanReport &report, const Settings &before) {
  std::string detail = reasonInWords(report);
  const auto add = [&detail](const std::string &words) { detail += (detail.empty() ? "" : "; ") + words; };
  if (report.ending == PlanEnding::RolledBackInPart) {
    for (const int number : servo::differencesBetween(report.holds, before))
      add(keyOf(number) + " is " + std::to_string(report.holds.at(number)));
  }
  for (const auto &[number, values] : report.doubtful)
    add(keyOf(number) + " may be " + valuesInWords(values));
  return detail;
}

std::chrono::sys_seconds HistoryJournal::now() {
  return std::chrono::floor<std::chrono::seconds>(std::chrono::system_clock::now());
}

HistoryJournal::HistoryJournal(HistoryFile &history, std::string port, std::string program, Clock clock)
    : history_(history), port_(std::move(port)), program_(std::move(program)), clock_(std::move(clock)) {}

bool HistoryJournal::begin(const Settings &before, const Settings &after) {
  before_ = before;
  if (!keepEntry(Reason::BeforePlan, rawOf(before))) return false;
  if (!append(PlanBeginLine{0, clock_(), port_, program_, rawOf(before), rawOf(after)})) return false;
  plan_ = appended_;
  return true;
}

bool HistoryJournal::end(const PlanReport &report) {
  if (!append(PlanEndLine{0, clock_(), plan_, outcomeOf(report.ending), detailOf(report, before_)}))
    return false;
  return report.holds.size() != wire::settingCount || keepEntry(Reason::AfterPlan, rawOf(report.holds));
}

/// Unless the newest entry has these settings.
bool HistoryJournal::keepEntry(Reason why, const RawSettings &settings) {
  if (error_ = history_.refresh(); error_.happened()) return false;
  const EntryLine *newest = history_.book().newest();
  if (newest && newest->settings == settings) return true;
  return append(EntryLine{0, clock_(), why, port_, program_, settings});
}

bool HistoryJournal::append(HistoryLine line) {
  const HistoryFile::Appended appended = history_.append(std::move(line), patience);
  error_ = appended.error;
  appended_ = appended.number;
  return !error_.happened();
}

}  // namespace tavril::records
