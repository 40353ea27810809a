#include "cli/Failure.h"
#include "cli/Options.h"
#include "cli/Plan.h"
#include "cli/Session.h"
#include "program/tavrilctl/CtlObjects.h"
#include "program/tavrilctl/Work.h"
#include "servo/Servo.h"
#include "simulator/VirtualServo.h"
#include "tests/cli/FailureOf.h"
#include "tests/cli/ScreenConsole.h"
#include "wire/Registers.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <chrono>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace tavril::cli {
namespace {

using namespace std::chrono_literals;

class CtlWorkTest : public testing::Test {
 protected:
  CtlWorkTest() {
    EXPECT_TRUE(servo.start());
    options.port = servo.path();
    options.bootWait = 0ms;
    options.timeout = 60s;
    objects.strings.setLanguage(QStringLiteral("en"));
  }

  /// What the command does for which the port is opened. Returns the status to exit with.
  int work(const Plan::Work &work) { return workThrough(objects, options, console, {work}, nullptr); }
  tcflag_t lineFlags() const {
    const int line = ::open(QFile::encodeName(servo.path()).constData(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios attributes{};
    EXPECT_EQ(::tcgetattr(line, &attributes), 0);
    ::close(line);
    return attributes.c_cflag;
  }

  simulator::VirtualServo servo;
  CtlObjects objects;
  Options options;
  ScreenConsole console{false};
};

TEST_F(CtlWorkTest, IsDoneOnAThreadOfItsOwnAndPutsTheLineBack) {
  const tcflag_t before = lineFlags();
  bool isMainThread = true;
  int load = 0;
  EXPECT_EQ(work([&](Session &session) {
              isMainThread = objects.mainQueue.isMainThread();
              load = session.expect(session.servo.read(*wire::findRegister(8)));
            }),
            0);
  EXPECT_FALSE(isMainThread);
  EXPECT_EQ(load, 400);
  EXPECT_EQ(lineFlags(), before);
}

TEST_F(CtlWorkTest, UsesTheTerminalToWhichALinkLeads) {
  const QTemporaryDir folder;
  options.port = folder.filePath(QStringLiteral("servo"));
  ASSERT_TRUE(QFile::link(servo.path(), options.port));
  QString name;
  EXPECT_EQ(work([&](Session &session) { name = session.portName; }), 0);
  EXPECT_TRUE(name.endsWith(servo.path().section(u'/', -1))) << name.toStdString();
}

TEST_F(CtlWorkTest, ThatFailsSaysWhyAndGivesItsStatus) {
  EXPECT_EQ(work([](Session &) { throw Failure{ExitCode::BadValue, QStringLiteral("too large")}; }), 5);
  EXPECT_EQ(console.told, QStringList(QStringLiteral("tavrilctl: too large")));
}

TEST_F(CtlWorkTest, IsNotBegunWithoutAPort) {
  options.port = QStringLiteral("/dev/null");
  bool begun = false;
  const Failure failure = failureOf([&] { work([&](Session &) { begun = true; }); });
  EXPECT_EQ(failure.code, ExitCode::NoPort);
  EXPECT_FALSE(begun);
}

TEST_F(CtlWorkTest, OfTheDoctorPrintsWhatItFinds) {
  EXPECT_EQ(examine(objects, options, console, nullptr), 0);
  EXPECT_TRUE(console.printed.contains(servo.path())) << console.printed.toStdString();
}

TEST_F(CtlWorkTest, WithADemoIsDoneOnAVirtualServoOfTheProgramsOwn) {
  options.port.clear();
  options.demo = true;
  int load = 0;
  EXPECT_EQ(
      work([&](Session &session) { load = session.expect(session.servo.read(*wire::findRegister(8))); }), 0);
  EXPECT_EQ(load, 400);
  EXPECT_EQ(servo.framesSeen(), 0);
}

}  // namespace
}  // namespace tavril::cli
