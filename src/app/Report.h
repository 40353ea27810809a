#pragma once

#include "app/ReadOut.h"
#include "protocol/PlainScreen.h"

#include <QString>

#include <functional>

namespace tavril {

enum class ReportFormat { Table, Json };

/// The read-out without a window. It registers plain values in the place of the screen, reads all twenty
/// registers, and reports the outcome once. It accepts replies of exact length only.
class Report {
 public:
  struct Outcome {
    bool succeeded = false;
    QString text;  ///< what to print, or one line that says what was wrong and what to do
  };
  using Finished = std::function<void(const Outcome &)>;

  Report(SharedState &state, AppDelegate &application, const Desktop &desktop, ReportFormat format,
         Finished finished);
  ~Report();
  Report(const Report &) = delete;
  Report &operator=(const Report &) = delete;

  /// Connects; `finished` may be called before this returns.
  void start() { readOut_.start(); }

 private:
  QString table() const;
  QString json() const;

  SharedState &state_;
  const ReportFormat format_;
  Finished finished_;
  PlainScreen elements_;
  ReadOut readOut_;
};

}  // namespace tavril
