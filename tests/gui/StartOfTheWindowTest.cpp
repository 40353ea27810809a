// What the real program does by itself when its window has opened.
#include "tests/gui/XDesktop.h"
#include "tests/support/Program.h"
#include "tests/support/Pty.h"

#include <QFile>
#include <QTemporaryDir>

namespace tavril {
namespace {

class StartOfTheWindow : public testing::Test {
 protected:
  StartOfTheWindow() {
    qputenv("XDG_RUNTIME_DIR", QFile::encodeName(folder_.path()));
    qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");  // a window of its own
  }
  ~StartOfTheWindow() override {
    for (const char *name : {"XDG_RUNTIME_DIR", "DBUS_SESSION_BUS_ADDRESS"}) qunsetenv(name);
  }

  bool hasWindows(const Program &program, std::size_t count) {
    return waitFor([&] { return desktop_.countWindows(program.processId()) == count; });
  }
  static bool isUntouched(const Pty &pty, const termios &before) {
    return pty.readPending().isEmpty() && pty.attributes().c_cflag == before.c_cflag;
  }

  QTemporaryDir folder_;
  XDesktop desktop_;
  Pty first_;
  Pty second_;
  const termios before_ = first_.attributes();
};

TEST_F(StartOfTheWindow, WithDemoConnectsToTheVirtualServo) {
  Program program(QStringLiteral("/bin/sh"),
                  {QStringLiteral("-c"), QStringLiteral("TAVRIL_LOG=1 exec \"$0\" --demo"),
                   QStringLiteral(TAVRIL_PROGRAM)});
  QString line;
  const QDeadlineTimer patience(std::chrono::seconds(60));
  while (!line.contains(QStringLiteral("PresentLoad=")) && !patience.hasExpired()) {
    line = program.firstErrorLine();
  }
  EXPECT_FALSE(patience.hasExpired()) << "the last register is read";
  EXPECT_TRUE(hasWindows(program, 1));
}

TEST_F(StartOfTheWindow, WithConnectAndOnePortNamedConnectsToIt) {
  TavrilProgram program({QStringLiteral("--connect"), QStringLiteral("--port"), first_.path()});
  EXPECT_EQ(first_.read(4), QByteArray::fromHex("ff0490fe")) << "looks for the servo";
}

TEST_F(StartOfTheWindow, WithConnectAndSeveralPortsOpensThePortDialog) {
  TavrilProgram program({QStringLiteral("--connect"), QStringLiteral("--port"), first_.path(),
                         QStringLiteral("--port"), second_.path()});
  EXPECT_TRUE(hasWindows(program, 2));
  EXPECT_TRUE(isUntouched(first_, before_));
  EXPECT_TRUE(isUntouched(second_, before_));
}

TEST_F(StartOfTheWindow, WithoutEitherWaitsForTheUser) {
  TavrilProgram program({QStringLiteral("--port"), first_.path()});
  ASSERT_TRUE(hasWindows(program, 1));
  ASSERT_TRUE(desktop_.close(program.processId()));
  EXPECT_EQ(program.outcome().status, 0);
  EXPECT_TRUE(isUntouched(first_, before_));
}

}  // namespace
}  // namespace tavril
