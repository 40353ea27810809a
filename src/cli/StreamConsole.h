#pragma once

#include "cli/Console.h"

#include <QString>

#include <cstdio>

namespace tavril::cli {

/// The console on two streams, which are not owned.
class StreamConsole final : public Console {
 public:
  StreamConsole(std::FILE *out, std::FILE *err, bool isTerminal)
      : out_(out), err_(err), isTerminal_(isTerminal) {}

  void data(const QString &text) override;
  void status(const QString &line) override;
  void transient(const QString &line) override;
  void note(const QString &line) override;
  bool isTerminal() const override { return isTerminal_ && !isQuiet_; }

  /// Leaves out notes and what passes by.
  void beQuiet() { isQuiet_ = true; }

 private:
  std::FILE *const out_;
  std::FILE *const err_;
  const bool isTerminal_;
  bool isQuiet_ = false;
  bool transientShown_ = false;
};

}  // namespace tavril::cli
