#pragma once

#include "records/HistoryLines.h"

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <utility>
#include <vector>

namespace tavril::records {

/// A line that was skipped. It stays in the file.
struct HistoryRemark {
  std::int64_t line = 0;  ///< of the file, from 1
  LineProblem problem = LineProblem::None;

  bool operator==(const HistoryRemark &) const = default;
};

struct PlanRecord {
  PlanBeginLine begin;
  std::optional<PlanEndLine> end;
};

struct SettingDifference {
  const wire::Register *row;
  int before;
  int after;

  bool operator==(const SettingDifference &) const = default;
};

/// Which servo some settings look like. One without a name cannot be recognised.
struct Resemblance {
  enum class Grade {
    Nobody,
    Maybe,       ///< ID and calibration are those of one servo
    Probable,    ///< all settings are
    CannotTell,  ///< of several servos, equally
  };

  Grade grade = Grade::Nobody;
  std::vector<std::string> names;  ///< those that it may be, the one last seen first

  bool operator==(const Resemblance &) const = default;
};

/// What differs, in the order of the registers.
std::vector<SettingDifference> differencesBetween(const RawSettings &before, const RawSettings &after);

/// The registers whose values would not be taken today. The history keeps whatever a servo held.
std::vector<const wire::Register *> outOfRange(const RawSettings &settings);

/// What the lines of the history say. Pointers are valid until more lines are taken.
class HistoryBook {
 public:
  /// Takes the bytes that follow those it took before, as far as the last line break, and returns how many
  /// these are. A rest is remarked as torn until the next call.
  std::size_t take(std::string_view bytes);

  /// In the order in which they were kept.
  const std::vector<EntryLine> &entries() const { return entries_; }
  /// Nothing if there is none.
  const EntryLine *newest() const { return entries_.empty() ? nullptr : &entries_.back(); }
  const EntryLine *find(LineNumber number) const;
  /// The name of the servo to which the entry belongs; empty if it has none.
  std::string nameOf(LineNumber entry) const;
  std::vector<const EntryLine *> entriesOf(std::string_view name) const;
  /// In the order in which they began.
  const std::vector<PlanRecord> &plans() const { return plans_; }
  std::vector<const PlanBeginLine *> openPlans() const;
  /// Compares with the newest entry of each name. The factory settings, which are the entries made after a
  /// reset, look like nobody.
  Resemblance looksLike(const RawSettings &settings) const;

  /// In the order of the lines.
  const std::vector<HistoryRemark> &remarks() const { return remarks_; }
  bool endsTorn() const;
  /// For the next line to be appended. Above that of every line, those that were skipped included.
  LineNumber nextNumber() const;

 private:
  void takeLine(std::string_view text);
  void keep(EntryLine &&line) { entries_.push_back(std::move(line)); }
  void keep(NameLine &&line);
  void keep(PlanBeginLine &&line) { plans_.push_back({std::move(line), {}}); }
  void keep(PlanEndLine &&line);
  bool isFactory(const RawSettings &settings, bool (*alike)(const RawSettings &, const RawSettings &)) const;
  std::vector<const EntryLine *> newestOfEachName() const;

  std::vector<EntryLine> entries_;
  std::vector<PlanRecord> plans_;
  std::unordered_map<LineNumber, std::string> names_;
  std::vector<HistoryRemark> remarks_;
  std::int64_t lines_ = 0;
  LineNumber highest_ = 0;
  LineNumber tornNumber_ = 0;  ///< of a last line that lacks nothing but its end, else 0
};

}  // namespace tavril::records
