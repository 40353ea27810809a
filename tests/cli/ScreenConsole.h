#pragma once

#include "cli/Console.h"
#include "cli/Failure.h"

#include <QString>
#include <QStringList>

namespace tavril::cli {

/// Notes what would be printed. Its disk may be full.
class ScreenConsole final : public Console {
 public:
  explicit ScreenConsole(bool isTerminal) : isTerminal_(isTerminal) {}
  void data(const QString &text) override {
    if (isFull) throw Failure{ExitCode::Failed, QStringLiteral("the disk is full.")};
    printed += text;
  }
  void status(const QString &line) override { told.append(line); }
  void note(const QString &line) override { told.append(line); }
  void transient(const QString &line) override { shown.append(line); }
  bool isTerminal() const override { return isTerminal_; }
  bool isFull = false;
  QStringList shown;
  QString printed;
  QStringList told;

 private:
  const bool isTerminal_;
};

}  // namespace tavril::cli
