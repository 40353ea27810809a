#include "records/HistoryFile.h"
#include "tests/records/HistoryBench.h"
#include "tests/support/TestFiles.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <string>

#include <sys/ptrace.h>
#include <sys/wait.h>
#include <unistd.h>

// A program that appends is killed before and after each of its system calls, in turn, until one gets to its
// end.

namespace tavril::records {
namespace {

EntryLine newEntry() {
  return entryWith(settingsWith(9, 450), Reason::BeforePlan);
}

/// In the child: waits for the parent, then appends. Never returns.
[[noreturn]] void appendTraced(const std::string &path) {
  if (::ptrace(PTRACE_TRACEME, 0, nullptr, nullptr) != 0) ::_exit(2);
  std::raise(SIGSTOP);
  HistoryFile file(path);
  ::_exit(file.append(newEntry()).error.happened() ? 1 : 0);
}

enum class End { Killed, Done, Failed };

/// Lets a child append, and kills it at its so many-th stop. It stops before and after each system call.
End appendKilledAt(const std::string &path, int stop) {
  const pid_t child = ::fork();
  if (child == 0) appendTraced(path);
  int status = 0;
  if (::waitpid(child, &status, 0) != child || !WIFSTOPPED(status)) return End::Failed;
  for (int stops = 0; stops < stop; ++stops) {
    if (::ptrace(PTRACE_SYSCALL, child, nullptr, nullptr) != 0) return End::Failed;
    if (::waitpid(child, &status, 0) != child) return End::Failed;
    if (WIFEXITED(status)) return WEXITSTATUS(status) == 0 ? End::Done : End::Failed;
    if (!WIFSTOPPED(status) || WSTOPSIG(status) != SIGTRAP) return End::Failed;
  }
  if (::kill(child, SIGKILL) != 0 || ::waitpid(child, &status, 0) != child) return End::Failed;
  return WIFSIGNALED(status) && WTERMSIG(status) == SIGKILL ? End::Killed : End::Failed;
}

class HistoryKilledTest : public testing::Test {
 protected:
  /// Begins each time with this file, or with none if it is null; `entries` of it can be read.
  void killAtEveryCall(const QByteArray &before, std::size_t entries) {
    int lost = 0;
    int kept = 0;
    End end = End::Killed;
    for (int stop = 1; end != End::Done; ++stop) {
      SCOPED_TRACE(stop);
      ASSERT_TRUE(QDir(folder_.filePath(QStringLiteral("data"))).removeRecursively());
      if (!before.isNull()) writeFile(path_, before);
      end = appendKilledAt(path(), stop);
      ASSERT_NE(end, End::Failed);
      ASSERT_NO_FATAL_FAILURE(expectSound(before, entries, end == End::Done));
      ++(isThere_ ? kept : lost);
    }
    // Some were killed before they had written, others after it.
    EXPECT_GT(lost, 10);
    EXPECT_GT(kept, 1);
  }

 private:
  std::string path() const { return QFile::encodeName(path_).toStdString(); }

  void expectSound(const QByteArray &before, std::size_t entries, bool mustBeThere) {
    HistoryFile file(path());
    ASSERT_FALSE(file.refresh().happened());
    isThere_ = file.book().entries().size() == entries + 1;
    ASSERT_TRUE(isThere_ || (!mustBeThere && file.book().entries().size() == entries));
    if (isThere_) {
      ASSERT_EQ(file.book().newest()->settings, newEntry().settings);
      ASSERT_EQ(file.book().newest()->why, newEntry().why);
    }
    if (QFile::exists(path_)) {
      ASSERT_TRUE(contentOf(path_).startsWith(before));
    }

    const HistoryFile::Appended next = file.append(entryWith(settingsWith(9, 460)));
    ASSERT_FALSE(next.error.happened());
    HistoryFile again(path());
    ASSERT_FALSE(again.refresh().happened());
    ASSERT_EQ(again.book().entries().size(), entries + (isThere_ ? 2 : 1));
    ASSERT_EQ(again.book().newest()->number, next.number);
    ASSERT_EQ(again.book().newest()->settings, settingsWith(9, 460));
    ASSERT_FALSE(again.book().endsTorn());
  }

  QTemporaryDir folder_;
  QString path_ = folder_.filePath(QStringLiteral("data/tavril/history.jsonl"));
  bool isThere_ = false;
};

TEST_F(HistoryKilledTest, LosesNothingButTheLineIfThereIsNoFileYet) {
  killAtEveryCall({}, 0);
}

TEST_F(HistoryKilledTest, LosesNothingButTheLineIfThereAreOthers) {
  killAtEveryCall(QByteArray::fromStdString(numbered(entryWith(someSettings), 1) +
                                            numbered(entryWith(settingsWith(9, 1)), 2)),
                  2);
}

TEST_F(HistoryKilledTest, LosesNothingButTheLineAfterATornOne) {
  killAtEveryCall(QByteArray::fromStdString(numbered(entryWith(someSettings), 1) + "{\"format\":1,"), 1);
}

}  // namespace
}  // namespace tavril::records
