#include "program/tavrilctl/ReadlineCommands.h"

#include "cli/CommandBook.h"
#include "cli/Completion.h"
#include "cli/Files.h"

#include <QDir>
#include <QFileInfo>

#include <algorithm>
#include <array>
#include <cerrno>
#include <cstdio>
#include <cstdlib>
#include <cstring>

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

// These need stdio's FILE first.
#include <QByteArray>
#include <QStringList>

#include <readline/history.h>
#include <readline/readline.h>

namespace tavril::cli {

namespace {

constexpr int longestHistory = 1000;
constexpr std::uint64_t dropIt = 1;
constexpr std::uint64_t endAll = 1ULL << 32;

/// The library knows functions only, no objects.
struct Typing {
  const CommandBook *book = nullptr;
  std::optional<QString> line;
  bool isDone = false;
  bool hasEnded = false;
  QStringList offers;
  int lines = 0;  ///< since the start
};
Typing typing;

void lineIsDone(char *text) {
  typing.isDone = true;
  typing.hasEnded = text == nullptr;
  typing.line.reset();
  if (text) {
    typing.line = textOf(text);
    if (*text != '\0') {
      add_history(text);
      ++typing.lines;
    }
    std::free(text);
  }
  rl_callback_handler_remove();
}

char *nextOffer(const char *, int state) {
  if (state >= typing.offers.size()) return nullptr;
  return ::strdup(bytesOf(typing.offers[state]).constData());
}

char **complete(const char *text, int start, int) {
  const QString before = textOf(QByteArray(rl_line_buffer, start));
  const Candidates candidates =
      candidatesFor(*typing.book, before.split(u' ', Qt::SkipEmptyParts), textOf(text));
  typing.offers = candidates.words;
  rl_attempted_completion_over = candidates.files ? 0 : 1;
  constexpr int nothing = 0;
  constexpr int blank = 0x20;
  rl_completion_append_character = candidates.isOpen ? nothing : blank;
  return candidates.files ? nullptr : rl_completion_matches(text, nextOffer);
}

}  // namespace

ReadlineCommands::ReadlineCommands(const CommandBook &book, const QString &historyFile)
    : historyFile_(bytesOf(historyFile).toStdString()), wake_(::eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK)) {
  typing = Typing{};
  typing.book = &book;
  rl_readline_name = "tavrilctl";
  rl_catch_signals = 0;  // they are taken care of elsewhere
  rl_attempted_completion_function = complete;
  rl_completer_word_break_characters = " \t";
  using_history();
  stifle_history(longestHistory);
  if (!historyFile_.empty()) read_history(historyFile_.c_str());
}

ReadlineCommands::~ReadlineCommands() {
  if (!historyFile_.empty()) {
    QDir().mkpath(QFileInfo(textOf(QByteArray::fromStdString(historyFile_))).path());
    // Another shell may have added to the file meanwhile.
    if (QFileInfo::exists(textOf(QByteArray::fromStdString(historyFile_)))) {
      append_history(std::min(typing.lines, longestHistory), historyFile_.c_str());
      history_truncate_file(historyFile_.c_str(), longestHistory);
    } else {
      write_history(historyFile_.c_str());
    }
  }
  if (wake_ >= 0) ::close(wake_);
}

std::optional<QString> ReadlineCommands::next() {
  if (typing.hasEnded) return std::nullopt;
  typing.isDone = false;
  // Ctrl-C that ended a command was not meant for the next line.
  std::uint64_t missed = 0;
  if (::read(wake_, &missed, sizeof missed) == sizeof missed && missed >= endAll) {
    typing.hasEnded = true;
    return std::nullopt;
  }
  rl_callback_handler_install("tavril> ", lineIsDone);
  while (!typing.isDone) {
    std::array<pollfd, 2> watched{{{STDIN_FILENO, POLLIN, 0}, {wake_, POLLIN, 0}}};
    if (::poll(watched.data(), watched.size(), -1) < 0 && errno != EINTR) break;
    std::uint64_t how = 0;
    if (watched[1].revents != 0 && ::read(wake_, &how, sizeof how) == sizeof how) {
      if (how >= endAll) {
        typing.hasEnded = true;
        rl_callback_handler_remove();
        return std::nullopt;
      }
      std::fputs("^C\n", rl_outstream);
      rl_replace_line("", 0);
      rl_point = rl_end = 0;
      rl_on_new_line();
      rl_redisplay();
    } else if (watched[0].revents != 0) {
      rl_callback_read_char();
    }
  }
  if (!typing.line) std::fputc('\n', stdout);
  return typing.line;
}

void ReadlineCommands::wake(std::uint64_t how) const {
  if (::write(wake_, &how, sizeof how) < 0) return;
}

void ReadlineCommands::dropLine() {
  wake(dropIt);
}

void ReadlineCommands::end() {
  wake(endAll);
}

}  // namespace tavril::cli
