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
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include <sys/ptrace.h>
#include <sys/syscall.h>
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

/// A child that appends, and stops before and after each of its system calls.
class TracedChild {
 public:
  explicit TracedChild(const std::string &path) : child_(::fork()) {
    if (child_ == 0) appendTraced(path);
    constexpr long options = PTRACE_O_TRACESYSGOOD | PTRACE_O_EXITKILL;
    isStopped_ =
        waitForStop(SIGSTOP, PTRACE_CONT) && ::ptrace(PTRACE_SETOPTIONS, child_, nullptr, options) == 0;
  }

  /// Lets it go on to its next stop; false once it has ended, or if something is wrong.
  bool goOn() {
    isStopped_ = isStopped_ && ::ptrace(PTRACE_SYSCALL, child_, nullptr, nullptr) == 0 &&
                 waitForStop(callStop, PTRACE_SYSCALL);
    return isStopped_;
  }
  bool kill() {
    return isStopped_ && ::kill(child_, SIGKILL) == 0 && !waitForStop(callStop, PTRACE_CONT) &&
           WIFSIGNALED(status_) && WTERMSIG(status_) == SIGKILL;
  }
  bool hasAppended() const { return !isStopped_ && WIFEXITED(status_) && WEXITSTATUS(status_) == 0; }
  /// The system call before or behind which it stands.
  std::optional<__ptrace_syscall_info> call() const {
    __ptrace_syscall_info info{};
    if (::ptrace(PTRACE_GET_SYSCALL_INFO, child_, sizeof info, &info) < 0) return {};
    return info;
  }

 private:
  static constexpr int callStop = SIGTRAP | 0x80;  // as PTRACE_O_TRACESYSGOOD has it

  /// False once it has ended, or if something is wrong. Other signals are passed on to it with the request.
  bool waitForStop(int wanted, __ptrace_request request) {
    while (::waitpid(child_, &status_, 0) == child_ && WIFSTOPPED(status_)) {
      const long signal = WSTOPSIG(status_);
      if (signal == wanted) return true;
      if (::ptrace(request, child_, nullptr, signal) != 0) return false;
    }
    return false;
  }

  pid_t child_;
  int status_ = 0;
  bool isStopped_ = false;
};

/// Containers and hardened machines may forbid it.
bool mayTrace(const std::string &path) {
  TracedChild child(path);
  return child.goOn() && child.call() && child.kill();
}

enum class End { Killed, Done, Failed };

/// Kills the child at its so many-th stop, unless it gets to its end.
End appendKilledAt(const std::string &path, int stop) {
  TracedChild child(path);
  for (int stops = 0; stops < stop; ++stops) {
    if (!child.goOn()) return child.hasAppended() ? End::Done : End::Failed;
  }
  return child.kill() ? End::Killed : End::Failed;
}

/// A system call that writes or syncs.
struct DiskCall {
  std::uint64_t number;
  std::uint64_t descriptor;
  std::uint64_t size;  ///< of what is written

  bool operator==(const DiskCall &) const = default;
};

/// Those of a child that appends. Nothing if it failed.
std::vector<DiskCall> diskCallsOfAppending(const std::string &path) {
  TracedChild child(path);
  std::vector<DiskCall> calls;
  while (child.goOn()) {
    const auto info = child.call();
    if (!info || info->op != PTRACE_SYSCALL_INFO_ENTRY) continue;
    const auto &call = info->entry;
    if (call.nr == SYS_write) calls.push_back({call.nr, call.args[0], call.args[2]});
    if (call.nr == SYS_fsync) calls.push_back({call.nr, call.args[0], 0});
  }
  return child.hasAppended() ? calls : std::vector<DiskCall>();
}

class HistoryKilledTest : public testing::Test {
 protected:
  void SetUp() override {
    static const bool isAllowed = mayTrace(path());
    if (!isAllowed) FAIL() << "this machine allows no ptrace";
  }

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

  std::string path() const { return QFile::encodeName(path_).toStdString(); }

  QTemporaryDir folder_;
  QString path_ = folder_.filePath(QStringLiteral("data/tavril/history.jsonl"));

 private:
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

  bool isThere_ = false;
};

TEST_F(HistoryKilledTest, WritesALineAtOnceAndSyncsIt) {
  const std::string before = numbered(entryWith(someSettings), 1);
  writeFile(path_, QByteArray::fromStdString(before));
  const std::vector<DiskCall> calls = diskCallsOfAppending(path());
  ASSERT_EQ(calls.size(), 2U);
  EXPECT_EQ(calls[0], (DiskCall{SYS_write, calls[0].descriptor, numbered(newEntry(), 2).size()}));
  EXPECT_EQ(calls[1], (DiskCall{SYS_fsync, calls[0].descriptor, 0}));
}

TEST_F(HistoryKilledTest, SyncsTheFoldersOfANewFile) {
  const std::vector<DiskCall> calls = diskCallsOfAppending(path());
  // Those in which the two folders were made, and the one in which the file was; then the file.
  ASSERT_EQ(calls.size(), 5U);
  EXPECT_EQ(calls[0].number, SYS_fsync);
  EXPECT_EQ(calls[1].number, SYS_fsync);
  EXPECT_EQ(calls[2].number, SYS_fsync);
  EXPECT_EQ(calls[3].number, SYS_write);
  EXPECT_NE(calls[3].descriptor, calls[2].descriptor);
  EXPECT_EQ(calls[4], (DiskCall{SYS_fsync, calls[3].descriptor, 0}));
}

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
