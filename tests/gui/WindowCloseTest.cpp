// The real program on a desktop with a window manager, which is asked to close its window.
#include "tests/gui/XDesktop.h"
#include "tests/support/Ownership.h"
#include "tests/support/Program.h"
#include "tests/support/Pty.h"

#include <QFile>
#include <QTemporaryDir>

#include <functional>
#include <memory>

namespace tavril {
namespace {

constexpr qsizetype frameSize = 50;

/// The program with its window, connected to a terminal of the test's.
class ConnectedProgram {
 public:
  /// `hanging`: the name of the thread that is to hang; empty for none.
  explicit ConnectedProgram(const char *hanging) : isToHang_(*hanging != '\0') {
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder_.path()));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");  // a window of its own
    qputenv("TAVRIL_TEST_HANG", hanging);
    qputenv("TAVRIL_TEST_HANGS", QFile::encodeName(mark()));
    if (isToHang_) qputenv("LD_PRELOAD", TAVRIL_HANGING_CALLS);
    program_ = std::make_unique<TavrilProgram>(
        QStringList{QStringLiteral("--connect"), QStringLiteral("--port"), pty_.path()});
    for (const char *name : {"XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS", "TAVRIL_TEST_HANG",
                             "TAVRIL_TEST_HANGS", "LD_PRELOAD"}) {
      qunsetenv(name);
    }
  }

  /// Whether the program has connected, and now has a worker that hangs where it is to have one.
  bool isConnected() { return pty_.read(frameSize).size() == frameSize && (!isToHang_ || hangs()); }
  bool hangs() const {
    return waitFor([this] { return QFile::exists(mark()); });
  }
  bool hasTakenTheLine() const { return !isAsBefore() && isExclusive(); }
  bool closeWindow() { return XDesktop().close(program_->processId()); }
  const Program::Outcome &outcome() { return program_->outcome(); }

  void terminate() { program_->terminate(); }

  bool isAsBefore() const { return sameAttributes(pty_.attributes(), before_); }
  bool isExclusive() const { return tavril::isExclusive(pty_); }

 private:
  QString mark() const { return folder_.filePath(QStringLiteral("hangs")); }

  const bool isToHang_;
  QTemporaryDir folder_;
  Pty pty_;
  const termios before_ = oddAttributes(pty_);
  std::unique_ptr<TavrilProgram> program_;
};

/// One program for each thread of a port, so that they wait for their bridges at the same time.
struct AllPrograms {
  ConnectedProgram well{""};
  ConnectedProgram withHangingReadLoop{"tavril-run"};
  ConnectedProgram withHangingPinPoller{"tavril-repeat"};
  ConnectedProgram ended{""};
  ConnectedProgram withHangingMainThread{"tavril"};
};
StartedFirst<AllPrograms> programs;

void expectGoodEnd(ConnectedProgram &program, const std::function<bool()> &end, int status) {
  ASSERT_TRUE(program.isConnected());
  ASSERT_TRUE(program.hasTakenTheLine());
  ASSERT_TRUE(waitFor(end));
  EXPECT_EQ(program.outcome().status, status);
  EXPECT_TRUE(program.isAsBefore());
  EXPECT_FALSE(program.isExclusive());
}

void expectGoodEnd(ConnectedProgram &program) {
  expectGoodEnd(
      program, [&] { return program.closeWindow(); }, 0);
}

TEST(ASignal, EndsTheProcessAndPutsTheLineBack) {
  const auto terminate = [] {
    programs->ended.terminate();
    return true;
  };
  expectGoodEnd(programs->ended, terminate, 143);
}

TEST(ASignal, EndsTheProcessAndPutsTheLineBackWhenTheMainThreadHangs) {
  ConnectedProgram &program = programs->withHangingMainThread;
  ASSERT_TRUE(program.hangs());  // while it opens the port
  program.terminate();
  EXPECT_EQ(program.outcome().status, 143);
  EXPECT_TRUE(program.isAsBefore());
  EXPECT_FALSE(program.isExclusive());
}

TEST(ClosingTheWindow, EndsTheProcessAndPutsTheLineBack) {
  expectGoodEnd(programs->well);
}

TEST(ClosingTheWindow, EndsTheProcessAndPutsTheLineBackWhenTheReadLoopHangs) {
  expectGoodEnd(programs->withHangingReadLoop);
}

TEST(ClosingTheWindow, EndsTheProcessAndPutsTheLineBackWhenThePinPollerHangs) {
  expectGoodEnd(programs->withHangingPinPoller);
}

}  // namespace
}  // namespace tavril
