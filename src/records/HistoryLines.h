#pragma once

#include "wire/Registers.h"

#include <array>
#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>
#include <variant>
#include <vector>

namespace tavril::records {

// The lines of the history, and each as text. docs/history.md describes the format.

/// The values of registers 1 to 15, in this order, as the servo holds them.
using RawSettings = std::array<int, wire::settingCount>;

/// A line of the file. 0: not numbered yet.
using LineNumber = std::int64_t;

/// Why the settings were kept. `Other`: for a reason that a later version knows.
enum class Reason { ReadOut, BeforePlan, AfterPlan, BeforeSweep, BeforeReset, AfterReset, Imported, Other };

/// How a plan ended. `Other` as above.
enum class PlanOutcome {
  NotBegun,
  Done,
  DonePolicyNotConfirmed,
  Cancelled,
  RolledBack,
  RolledBackInPart,
  Unknown,
  Other
};

/// What the servo held.
struct EntryLine {
  LineNumber number = 0;
  std::chrono::sys_seconds time;
  Reason why = Reason::ReadOut;
  std::string port;
  std::string program;  ///< that wrote it, with its version
  RawSettings settings{};

  bool operator==(const EntryLine &) const = default;
};

/// From now on these entries belong to the servo of this name; to none if the name is empty.
struct NameLine {
  LineNumber number = 0;
  std::chrono::sys_seconds time;
  std::string name;
  std::vector<LineNumber> entries;

  bool operator==(const NameLine &) const = default;
};

/// A plan is about to write. What it does not change is the same in both.
struct PlanBeginLine {
  LineNumber number = 0;
  std::chrono::sys_seconds time;
  std::string port;
  std::string program;
  RawSettings before{};
  RawSettings after{};

  bool operator==(const PlanBeginLine &) const = default;
};

struct PlanEndLine {
  LineNumber number = 0;
  std::chrono::sys_seconds time;
  LineNumber plan = 0;  ///< the number of the line with which it began
  PlanOutcome outcome = PlanOutcome::Done;
  std::string detail;  ///< what the outcome does not say, for people

  bool operator==(const PlanEndLine &) const = default;
};

using HistoryLine = std::variant<EntryLine, NameLine, PlanBeginLine, PlanEndLine>;

/// What is wrong with a line, which is then skipped and stays in the file.
enum class LineProblem {
  None,
  Damaged,      ///< its checksum is not that of its text
  Malformed,    ///< the checksum is right, and the content is not what the format says
  LaterFormat,  ///< a later version of the program wrote it
  UnknownKind,  ///< likewise, in this format
  Repeated,     ///< its number is not above those before it
  Torn,         ///< the last line, without its end: it is being written, or its writer was interrupted
};

struct DecodedLine {
  std::optional<HistoryLine> line;  ///< nothing if there is a problem
  LineProblem problem = LineProblem::None;
};

/// The line without the line break at its end. Bytes that are not UTF-8 become replacement characters.
std::string textOf(const HistoryLine &line);
DecodedLine lineFrom(std::string_view text);

}  // namespace tavril::records
