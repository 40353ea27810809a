// Two starts of the program, as a user makes them.
#include "tests/support/Program.h"
#include "tests/support/SessionBus.h"

#include <QTemporaryDir>
#include <QTest>
#include <QWidget>

namespace tavril {
namespace {

class SecondStart : public testing::Test {
 protected:
  SecondStart() {
    qputenv("DBUS_SESSION_BUS_ADDRESS", bus_.address().toUtf8());
    // Without it Qt has something to say on the standard error output.
    qputenv("XDG_RUNTIME_DIR", folder_.path().toUtf8());
    other_.show();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&other_));
  }
  ~SecondStart() override { qunsetenv("DBUS_SESSION_BUS_ADDRESS"); }

  /// Starts the program and waits until its window has come up in front.
  std::unique_ptr<TavrilProgram> startFirst() {
    auto first = std::make_unique<TavrilProgram>(QStringList{QStringLiteral("--demo")});
    EXPECT_TRUE(waitFor([this] { return !other_.isActiveWindow(); }));
    other_.raise();
    other_.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&other_));
    return first;
  }

  SessionBus bus_;
  QTemporaryDir folder_;
  QWidget other_;
};

TEST_F(SecondStart, RaisesTheRunningWindowAndEnds) {
  const auto first = startFirst();
  TavrilProgram second({});
  expectSuccess(second.outcome(), "");
  EXPECT_TRUE(waitFor([this] { return !other_.isActiveWindow(); }));
  EXPECT_TRUE(first->isRunning());
}

TEST_F(SecondStart, SaysClearlyThatAPortHasNoEffect) {
  const auto first = startFirst();
  TavrilProgram second({QStringLiteral("--port"), QStringLiteral("/dev/null")});
  expectComplaint(
      second.outcome(),
      "Tavril is already running. Its window is in front now, and --port had no effect: close that window "
      "first, or choose in it.");
  EXPECT_TRUE(waitFor([this] { return !other_.isActiveWindow(); }));
}

TEST_F(SecondStart, OfAReadOutHasNothingToDoWithTheWindow) {
  const auto first = startFirst();
  TavrilProgram second({QStringLiteral("--demo"), QStringLiteral("--report"), QStringLiteral("--json")});
  const Program::Outcome &outcome = second.outcome();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("\"registers\""), std::string::npos);
  EXPECT_TRUE(other_.isActiveWindow());
}

TEST_F(SecondStart, WithoutABusOpensAWindowOfItsOwn) {
  const auto first = startFirst();
  qputenv("DBUS_SESSION_BUS_ADDRESS", "unix:path=/nonexistent");
  TavrilProgram second({QStringLiteral("--demo")});
  EXPECT_TRUE(waitFor([this] { return !other_.isActiveWindow(); }));
  EXPECT_TRUE(second.isRunning());
}

}  // namespace
}  // namespace tavril
