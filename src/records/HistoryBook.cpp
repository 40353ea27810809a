#include "records/HistoryBook.h"

#include <algorithm>
#include <array>
#include <set>
#include <utility>
#include <variant>

namespace tavril::records {

namespace {

int valueAt(const RawSettings &settings, int number) {
  return settings.at(static_cast<std::size_t>(number) - 1);
}

LineNumber numberOf(const HistoryLine &line) {
  return std::visit([](const auto &known) { return known.number; }, line);
}

bool areEqual(const RawSettings &one, const RawSettings &other) {
  return one == other;
}

/// The settings that differ from joint to joint of a robot.
bool haveSameIdAndCalibration(const RawSettings &one, const RawSettings &other) {
  return std::ranges::all_of(
      std::array{wire::RegisterNumber::ServoId, wire::RegisterNumber::CalibrationAngle},
      [&](int number) { return valueAt(one, number) == valueAt(other, number); });
}

}  // namespace

std::vector<SettingDifference> differencesBetween(const RawSettings &before, const RawSettings &after) {
  std::vector<SettingDifference> all;
  for (const wire::Register &row : wire::settingRegisters) {
    const SettingDifference difference{&row, valueAt(before, row.number), valueAt(after, row.number)};
    if (difference.before != difference.after) all.push_back(difference);
  }
  return all;
}

std::vector<const wire::Register *> outOfRange(const RawSettings &settings) {
  std::vector<const wire::Register *> all;
  for (const wire::Register &row : wire::settingRegisters) {
    if (!row.range.contains(valueAt(settings, row.number))) all.push_back(&row);
  }
  return all;
}

std::size_t HistoryBook::take(std::string_view bytes) {
  if (endsTorn()) remarks_.pop_back();
  std::size_t taken = 0;
  for (;;) {
    const std::size_t end = bytes.find('\n', taken);
    if (end == std::string_view::npos) break;
    takeLine(bytes.substr(taken, end - taken));
    taken = end + 1;
  }
  tornNumber_ = 0;
  if (taken < bytes.size()) {
    remarks_.push_back({lines_ + 1, LineProblem::Torn});
    if (const auto line = lineFrom(bytes.substr(taken)).line) tornNumber_ = numberOf(*line);
  }
  return taken;
}

void HistoryBook::takeLine(std::string_view text) {
  ++lines_;
  DecodedLine decoded = lineFrom(text);
  if (decoded.line) {
    const LineNumber number = numberOf(*decoded.line);
    if (number > highest_) {
      highest_ = number;
      std::visit([this](auto &line) { keep(std::move(line)); }, *decoded.line);
      return;
    }
    decoded.problem = LineProblem::Repeated;
  }
  remarks_.push_back({lines_, decoded.problem});
}

void HistoryBook::keep(NameLine &&line) {
  for (const LineNumber entry : line.entries) names_[entry] = line.name;
}

void HistoryBook::keep(PlanEndLine &&line) {
  // The line with which it began may be among those that were skipped.
  // Most plans end before the next one begins.
  const auto plan = std::find_if(plans_.rbegin(), plans_.rend(), [&line](const PlanRecord &record) {
    return record.begin.number == line.plan;
  });
  if (plan != plans_.rend()) plan->end = std::move(line);
}

const EntryLine *HistoryBook::find(LineNumber number) const {
  const auto entry = std::ranges::lower_bound(entries_, number, {}, &EntryLine::number);
  return entry != entries_.end() && entry->number == number ? &*entry : nullptr;
}

std::string HistoryBook::nameOf(LineNumber entry) const {
  const auto name = names_.find(entry);
  return name == names_.end() ? std::string() : name->second;
}

std::vector<const EntryLine *> HistoryBook::entriesOf(std::string_view name) const {
  std::vector<const EntryLine *> all;
  for (const EntryLine &entry : entries_) {
    if (nameOf(entry.number) == name) all.push_back(&entry);
  }
  return all;
}

std::vector<const PlanBeginLine *> HistoryBook::openPlans() const {
  std::vector<const PlanBeginLine *> all;
  for (const PlanRecord &plan : plans_) {
    if (!plan.end) all.push_back(&plan.begin);
  }
  return all;
}

Resemblance HistoryBook::looksLike(const RawSettings &settings) const {
  using Grade = Resemblance::Grade;
  const std::vector<const EntryLine *> known = newestOfEachName();
  for (const auto &[grade, alike] :
       {std::pair(Grade::Probable, &areEqual), std::pair(Grade::Maybe, &haveSameIdAndCalibration)}) {
    // Every servo had these once.
    if (isFactory(settings, alike)) return {};
    Resemblance found{grade, {}};
    for (const EntryLine *entry : known) {
      if (alike(entry->settings, settings)) found.names.push_back(nameOf(entry->number));
    }
    if (found.names.size() > 1) found.grade = Grade::CannotTell;
    if (!found.names.empty()) return found;
  }
  return {};
}

bool HistoryBook::isFactory(const RawSettings &settings,
                            bool (*alike)(const RawSettings &, const RawSettings &)) const {
  return std::ranges::any_of(entries_, [&](const EntryLine &entry) {
    return entry.why == Reason::AfterReset && alike(entry.settings, settings);
  });
}

std::vector<const EntryLine *> HistoryBook::newestOfEachName() const {
  std::vector<const EntryLine *> all;
  std::set<std::string> seen;
  std::for_each(entries_.rbegin(), entries_.rend(), [&](const EntryLine &entry) {
    const std::string name = nameOf(entry.number);
    if (!name.empty() && seen.insert(name).second) all.push_back(&entry);
  });
  return all;
}

bool HistoryBook::endsTorn() const {
  return !remarks_.empty() && remarks_.back().problem == LineProblem::Torn;
}

LineNumber HistoryBook::nextNumber() const {
  return std::max({highest_, lines_ + (endsTorn() ? 1 : 0), tornNumber_}) + 1;
}

}  // namespace tavril::records
