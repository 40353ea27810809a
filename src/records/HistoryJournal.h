#pragma once

#include "records/HistoryFile.h"
#include "servo/Journal.h"
#include "servo/PlanRules.h"

#include <chrono>
#include <functional>
#include <string>

namespace tavril::records {

/// Keeps plans in the history: begin and end, and what the servo held before and holds afterwards, where that
/// is not the newest entry.
class HistoryJournal final : public servo::Journal {
 public:
  using Clock = std::function<std::chrono::sys_seconds()>;
  static std::chrono::sys_seconds now();

  /// The port and the program, with its version, are for the lines.
  HistoryJournal(HistoryFile &history, std::string port, std::string program, Clock clock = now);

  bool begin(const servo::Settings &before, const servo::Settings &after) override;
  bool end(const servo::PlanReport &report) override;

  /// Why the last line could not be kept.
  const posix::FileError &error() const { return error_; }

 private:
  bool keepEntry(Reason why, const RawSettings &settings);
  bool append(HistoryLine line);

  HistoryFile &history_;
  const std::string port_;
  const std::string program_;
  const Clock clock_;
  LineNumber plan_ = 0;      ///< the line with which it began
  LineNumber appended_ = 0;  ///< the last line that was kept
  servo::Settings before_;   ///< the plan
  posix::FileError error_;
};

/// What the ending of a plan does not say: why, and what the servo holds or may hold that it did not hold
/// `before`, unless all is done. Empty if there is no more.
std::string detailOf(const servo::PlanReport &report, const servo::Settings &before);

}  // namespace tavril::records
