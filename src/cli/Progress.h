#pragma once

#include "servo/Line.h"

#include <QString>

#include <chrono>

namespace tavril::cli {

class Console;

/// "[########------------]  8/20 reading"; the shares are counted, not timed.
QString progressBar(int done, int total, const QString &what);

/// A bar for work that takes more than a second, on a terminal; nothing otherwise. Taken away at its end.
class Progress {
 public:
  static constexpr servo::Time shownAfter = std::chrono::seconds(1);

  Progress(Console &console, const servo::Line &line, QString what, int total);
  ~Progress();
  Progress(const Progress &) = delete;
  Progress &operator=(const Progress &) = delete;

  void done(int count);

 private:
  Console &console_;
  const servo::Line &line_;
  const QString what_;
  const int total_;
  const servo::Time begun_;
};

}  // namespace tavril::cli
