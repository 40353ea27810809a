#pragma once

#include "cli/CommandBook.h"
#include "cli/Options.h"

#include <QString>

#include <CLI/CLI.hpp>
#include <string>
#include <utility>
#include <vector>

namespace tavril::cli {

/// The commands and options that there are, and the texts that parsing fills in. All of it in one place:
/// help, completion and manual page are read from here.
struct CommandDefinitions {
  CLI::App app;

  std::string port;
  std::string timeout;
  std::string retries;
  std::string bootWait;
  std::string interval;
  std::string csv;
  std::string count;
  std::string generate;
  std::vector<std::string> except;
  bool demo = false;
  bool verbose = false;
  bool quiet = false;
  bool names = false;
  bool keepGoing = false;
  bool json = false;
  bool dryRun = false;
  bool force = false;
  bool wait = false;
  bool yes = false;
  std::vector<std::string> operands;
  std::vector<std::pair<CLI::App *, Verb>> verbs;

  explicit CommandDefinitions(const QString &version);

  /// The command that was given; nothing if there was none.
  const std::pair<CLI::App *, Verb> *chosen() const;
  CommandBook book(const QString &version) const;

 private:
  CLI::App *verb(Verb which, const char *name, const std::string &text);
  void asJson(CLI::App *command) { command->add_flag("--json", json, "Print JSON."); }
  void confirmed(CLI::App *command);
  void changes(CLI::App *command, const char *dryRunText);
  void operand(CLI::App *command, const char *name, const std::string &text, bool required, bool several);
};

/// What is hidden has no entry.
std::vector<OptionEntry> entriesOf(const CLI::App &app);

}  // namespace tavril::cli
