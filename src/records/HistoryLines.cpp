#include "records/HistoryLines.h"

#include "records/Crc32.h"

#include <algorithm>
#include <charconv>
#include <cstddef>
#include <cstdio>
#include <nlohmann/json.hpp>
#include <span>
#include <system_error>
#include <utility>

namespace tavril::records {

namespace {

using nlohmann::json;
using nlohmann::ordered_json;

constexpr int format = 1;
/// With these words each line of each format begins.
constexpr std::string_view lineBegin = R"({"format":)";
/// Between what the checksum is of and its eight digits.
constexpr std::string_view checksumBegin = R"(,"crc":")";
constexpr std::string_view checksumEnd = R"("})";
constexpr std::size_t checksumDigits = 8;
/// Beyond this, other programs that read JSON may round.
constexpr LineNumber largestNumber = (LineNumber{1} << 53) - 1;
/// More than the two bytes of a register can say, signed or not.
constexpr std::int64_t largestValue = 65535;

template <typename Value>
using Word = std::pair<Value, std::string_view>;

constexpr auto reasons = std::to_array<Word<Reason>>({{Reason::ReadOut, "read-out"},
                                                      {Reason::BeforePlan, "before-plan"},
                                                      {Reason::AfterPlan, "after-plan"},
                                                      {Reason::BeforeSweep, "before-sweep"},
                                                      {Reason::BeforeReset, "before-reset"},
                                                      {Reason::AfterReset, "after-reset"},
                                                      {Reason::Imported, "imported"},
                                                      {Reason::Other, "other"}});
constexpr auto outcomes =
    std::to_array<Word<PlanOutcome>>({{PlanOutcome::NotBegun, "not-begun"},
                                      {PlanOutcome::Done, "done"},
                                      {PlanOutcome::DonePolicyNotConfirmed, "done-policy-not-confirmed"},
                                      {PlanOutcome::Cancelled, "cancelled"},
                                      {PlanOutcome::RolledBack, "rolled-back"},
                                      {PlanOutcome::RolledBackInPart, "rolled-back-in-part"},
                                      {PlanOutcome::Unknown, "unknown"},
                                      {PlanOutcome::Other, "other"}});

template <typename Value>
std::string_view wordFor(Value value, std::span<const Word<Value>> words) {
  return std::ranges::find(words, value, &Word<Value>::first)->second;
}

template <typename Value>
Value valueFor(std::string_view word, std::span<const Word<Value>> words) {
  const auto found = std::ranges::find(words, word, &Word<Value>::second);
  return found == words.end() ? Value::Other : found->first;
}

/// "2026-03-04T05:06:07Z"
constexpr std::size_t timeLength = 20;

std::string timeText(std::chrono::sys_seconds time) {
  const auto day = std::chrono::floor<std::chrono::days>(time);
  const std::chrono::year_month_day date(day);
  const std::chrono::hh_mm_ss clock(time - day);
  std::array<char, 64> text{};
  std::snprintf(text.data(), text.size(), "%04d-%02u-%02uT%02d:%02d:%02dZ", static_cast<int>(date.year()),
                static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                static_cast<int>(clock.seconds().count()));
  return text.data();
}

std::optional<std::chrono::sys_seconds> timeFrom(std::string_view text) {
  if (text.size() != timeLength) return {};
  const auto digits = [text](std::size_t at, std::size_t count) {
    int value = -1;
    std::from_chars(text.data() + at, text.data() + at + count, value);
    return value;
  };
  const std::chrono::year_month_day date{std::chrono::year(digits(0, 4)),
                                         std::chrono::month(static_cast<unsigned>(digits(5, 2))),
                                         std::chrono::day(static_cast<unsigned>(digits(8, 2)))};
  if (!date.ok()) return {};
  const std::chrono::sys_seconds time = std::chrono::sys_days(date) + std::chrono::hours(digits(11, 2)) +
                                        std::chrono::minutes(digits(14, 2)) +
                                        std::chrono::seconds(digits(17, 2));
  // Whatever is not as we write it, such as a blank or an hour 25, comes out as another text.
  if (timeText(time) != text) return {};
  return time;
}

std::string checksumOf(std::string_view text) {
  std::array<char, checksumDigits + 1> digits{};
  std::snprintf(digits.data(), digits.size(), "%08x", static_cast<unsigned>(crc32(text)));
  return digits.data();
}

/// Whether the line ends with the checksum of what stands before it.
bool isWhole(std::string_view text) {
  constexpr std::size_t tail = checksumBegin.size() + checksumDigits + checksumEnd.size();
  if (text.size() < tail) return false;
  const std::string_view content = text.substr(0, text.size() - tail);
  return text.substr(content.size()) ==
         std::string(checksumBegin) + checksumOf(content) + std::string(checksumEnd);
}

/// 0 when the text does not begin as a line of any format does.
int formatOf(std::string_view text) {
  if (!text.starts_with(lineBegin)) return 0;
  const char *const end = text.data() + text.size();
  int number = 0;
  const auto [next, error] = std::from_chars(text.data() + lineBegin.size(), end, number);
  return error == std::errc() && next != end && *next == ',' ? number : 0;
}

/// Reads the members of an object, and remembers whether all were there and of their kind.
class Members {
 public:
  explicit Members(const json &object) : object_(object) {}

  bool wereThere() const { return wereThere_; }

  std::string text(const char *key) {
    const json &value = member(key);
    if (value.is_string()) return value.get<std::string>();
    wereThere_ = false;
    return {};
  }
  LineNumber number(const char *key) { return integer(member(key), 1, largestNumber); }
  std::vector<LineNumber> numbers(const char *key) {
    std::vector<LineNumber> all;
    for (const json &value : list(key)) all.push_back(integer(value, 1, largestNumber));
    return all;
  }
  std::chrono::sys_seconds time(const char *key) {
    const auto value = timeFrom(text(key));
    if (!value) wereThere_ = false;
    return value.value_or(std::chrono::sys_seconds());
  }
  RawSettings settings(const char *key) {
    RawSettings all{};
    const json &values = list(key);
    if (values.size() != all.size()) {
      wereThere_ = false;
      return all;
    }
    std::ranges::transform(values, all.begin(), [this](const json &value) {
      return static_cast<int>(integer(value, -largestValue, largestValue));
    });
    return all;
  }

 private:
  const json &member(const char *key) const {
    static const json none;
    const auto found = object_.find(key);
    return found == object_.end() ? none : *found;
  }
  const json &list(const char *key) {
    static const json none = json::array();
    const json &value = member(key);
    if (value.is_array()) return value;
    wereThere_ = false;
    return none;
  }
  std::int64_t integer(const json &value, std::int64_t lowest, std::int64_t highest) {
    // Such a number would come out as a negative one below.
    const bool isHuge =
        value.is_number_unsigned() && !std::in_range<std::int64_t>(value.get<std::uint64_t>());
    if (value.is_number_integer() && !isHuge) {
      const auto number = value.get<std::int64_t>();
      if (number >= lowest && number <= highest) return number;
    }
    wereThere_ = false;
    return lowest;
  }

  const json &object_;
  bool wereThere_ = true;
};

// The two functions of each kind: its members, and the line made of them.

constexpr std::string_view kindOf(const EntryLine &) {
  return "entry";
}
constexpr std::string_view kindOf(const NameLine &) {
  return "name";
}
constexpr std::string_view kindOf(const PlanBeginLine &) {
  return "plan-begin";
}
constexpr std::string_view kindOf(const PlanEndLine &) {
  return "plan-end";
}

void put(const EntryLine &line, ordered_json &object) {
  object["why"] = wordFor<Reason>(line.why, reasons);
  object["port"] = line.port;
  object["program"] = line.program;
  object["settings"] = line.settings;
}

void put(const NameLine &line, ordered_json &object) {
  object["name"] = line.name;
  object["entries"] = line.entries;
}

void put(const PlanBeginLine &line, ordered_json &object) {
  object["port"] = line.port;
  object["program"] = line.program;
  object["before"] = line.before;
  object["after"] = line.after;
}

void put(const PlanEndLine &line, ordered_json &object) {
  object["plan"] = line.plan;
  object["outcome"] = wordFor<PlanOutcome>(line.outcome, outcomes);
  object["detail"] = line.detail;
}

void take(EntryLine &line, Members &members) {
  line.why = valueFor<Reason>(members.text("why"), reasons);
  line.port = members.text("port");
  line.program = members.text("program");
  line.settings = members.settings("settings");
}

void take(NameLine &line, Members &members) {
  line.name = members.text("name");
  line.entries = members.numbers("entries");
}

void take(PlanBeginLine &line, Members &members) {
  line.port = members.text("port");
  line.program = members.text("program");
  line.before = members.settings("before");
  line.after = members.settings("after");
}

void take(PlanEndLine &line, Members &members) {
  line.plan = members.number("plan");
  line.outcome = valueFor<PlanOutcome>(members.text("outcome"), outcomes);
  line.detail = members.text("detail");
}

template <typename Kind>
DecodedLine lineOf(Members &members) {
  Kind line;
  line.number = members.number("number");
  line.time = members.time("time");
  take(line, members);
  if (!members.wereThere()) return {{}, LineProblem::Malformed};
  return {std::move(line), LineProblem::None};
}

}  // namespace

std::string textOf(const HistoryLine &line) {
  ordered_json object{{"format", format}};
  std::visit(
      [&object](const auto &known) {
        object["kind"] = kindOf(known);
        object["number"] = known.number;
        object["time"] = timeText(known.time);
        put(known, object);
      },
      line);
  std::string text = object.dump(-1, ' ', false, ordered_json::error_handler_t::replace);
  text.pop_back();  // its closing brace, which stands behind the checksum
  return text + std::string(checksumBegin) + checksumOf(text) + std::string(checksumEnd);
}

DecodedLine lineFrom(std::string_view text) {
  // Of a later format not even the checksum is known.
  if (formatOf(text) > format) return {{}, LineProblem::LaterFormat};
  if (formatOf(text) != format || !isWhole(text)) return {{}, LineProblem::Damaged};
  const json object = json::parse(text, nullptr, false);
  if (!object.is_object()) return {{}, LineProblem::Malformed};
  Members members(object);
  const std::string kind = members.text("kind");
  if (!members.wereThere()) return {{}, LineProblem::Malformed};
  if (kind == kindOf(EntryLine())) return lineOf<EntryLine>(members);
  if (kind == kindOf(NameLine())) return lineOf<NameLine>(members);
  if (kind == kindOf(PlanBeginLine())) return lineOf<PlanBeginLine>(members);
  if (kind == kindOf(PlanEndLine())) return lineOf<PlanEndLine>(members);
  return {{}, LineProblem::UnknownKind};
}

}  // namespace tavril::records
