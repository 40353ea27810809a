#pragma once

#include "cli/Options.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril::cli {

/// An option or an operand, as help, completion and manual page need to know it.
struct OptionEntry {
  QStringList names;  ///< "--port"; empty for an operand
  QString value;      ///< "NAME|PATH", which also tells what may stand there; empty: takes none
  QString description;
  bool required = false;
  bool repeated = false;

  bool isOperand() const { return names.isEmpty(); }
};

struct CommandEntry {
  QString name;
  Verb which = Verb::Ports;
  QString description;
  std::vector<OptionEntry> options;  ///< and operands
};

/// A command line to begin with, and what it does.
struct Example {
  QString command;
  QString purpose;
};

/// Everything that can be typed, read from the very definitions by which it is parsed.
struct CommandBook {
  QString program;
  QString version;
  QString description;
  std::vector<Example> examples;
  QString exitStatus;   ///< a title, and a line for each
  QString environment;  ///< likewise
  std::vector<OptionEntry> commonOptions;
  std::vector<CommandEntry> commands;
};

}  // namespace tavril::cli
