#pragma once

#include "servo/Line.h"

#include <QString>

#include <functional>
#include <memory>
#include <thread>

namespace tavril {

class Log;
class SerialLine;
class SerialPort;
struct SerialEnvironment;
struct SharedState;

enum class ReportFormat { Table, Json };

struct ReportOutcome {
  bool succeeded = false;
  QString text;  ///< what to print, or one line that says what was wrong and what to do
};

/// Waits until the bridge has started, expects exactly one servo behind it and reads all twenty registers.
/// Blocks.
ReportOutcome reportOf(servo::Line &line, servo::Time startUp, const QString &portName, ReportFormat format,
                       Log &log);

/// The read-out without a window: the report of the first listed port, made on a thread of its own.
class Report {
 public:
  using Finished = std::function<void(const ReportOutcome &)>;

  /// `finished` is called once, on the main thread.
  Report(SharedState &state, const SerialEnvironment &serial, servo::Time startUp, ReportFormat format,
         Finished finished);
  /// Ends the reading, if it goes on, and closes the port.
  ~Report();
  Report(const Report &) = delete;
  Report &operator=(const Report &) = delete;

  /// Opens the port; `finished` may be called before this returns.
  void start();

 private:
  SharedState &state_;
  const SerialEnvironment &serial_;
  const servo::Time startUp_;
  const ReportFormat format_;
  const std::shared_ptr<const Finished> finished_;
  std::shared_ptr<SerialPort> port_;
  std::shared_ptr<SerialLine> line_;
  std::thread worker_;
};

}  // namespace tavril
