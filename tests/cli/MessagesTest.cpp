// What the programs say when they cannot do what was asked, word for word: each message says what is wrong
// and what to do about it.
#include "tests/cli/CtlProgram.h"

#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <regex>

#include <sys/stat.h>

namespace tavril {
namespace {

void expectSaid(Program &program, int status, const std::string &text) {
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.status, status) << outcome.err;
  EXPECT_NE(outcome.err.find(text), std::string::npos) << outcome.err;
}

struct Said {
  const char *name;
  const char *arguments;
  int status;
  const char *text;
};

std::ostream &operator<<(std::ostream &out, const Said &said) {
  return out << said.arguments;
}

class Messages : public testing::TestWithParam<Said> {};

TEST_P(Messages, SayWhatIsWrongAndWhatToDo) {
  CtlProgram program(QString::fromLatin1(GetParam().arguments));
  expectSaid(program, GetParam().status, GetParam().text);
}

std::string nameOf(const testing::TestParamInfo<Said> &parameter) {
  return parameter.param.name;
}

INSTANTIATE_TEST_SUITE_P(
    Tavrilctl, Messages,
    testing::Values(
        Said{"NoPosition", "move fast", 2,
             "\"fast\" is not a position: write a number from 0 to 1023, or degrees such as 90deg."},
        Said{"PositionOutOfRange", "move 1024", 5,
             "position 1024 is out of range (0 to 1023, or 0deg to 300deg)."},
        Said{"NoAssignment", "write kp", 2,
             "\"kp\" is not an assignment: write a register, = and its value, such as kp=440."},
        Said{"LiveValue", "write present_load=5", 2,
             "present_load is measured by the servo and cannot be written."},
        Said{"NoNumber", "write kp=high", 2, "kp takes a whole number from 0 to 32766, not \"high\"."},
        Said{"AssignedTwice", "write kp=5 kp=6", 2, "kp is there twice: give it one value."},
        Said{"NoFile", "restore /dev/null", 6,
             "/dev/null is not a regular file, so it was not read. For a stream, write - instead."},
        Said{"AFolder", "dump /", 6, "/ is a folder: name a file."},
        Said{"NotWritten", "dump /nowhere/at/all.json --demo --timeout 60000", 6,
             "/nowhere/at/all.json could not be written: No such file or directory."},
        Said{"SamplesNotWritten", "monitor --count 1 --csv /nowhere/at/all.csv --demo --timeout 60000", 6,
             "/nowhere/at/all.csv could not be written: No such file or directory."},
        Said{"NoTerminal", "detect --port /dev/null", 3,
             "/dev/null: is not a terminal but a device of kind \"mem\". Name a serial terminal, such as "
             "/dev/ttyUSB0."},
        Said{"ResetAsks", "reset", 2,
             "reset overwrites all fifteen settings, the servo ID included. Save them with dump first"},
        Said{"RebootAsks", "reboot", 2, "reboot restarts the servo. Confirm with --yes."},
        Said{"FrameOfAResetAsks", "send FF0495FE", 2,
             "this is the frame to restore the factory settings. Confirm with --yes."},
        Said{"FrameOfARebootAsks", "send FF0494FE", 2, "this is the frame to reboot. Confirm with --yes."},
        Said{"Danger", "write ack_policy=0 --port /dev/nothing", 5,
             "ack_policy=0 may keep the servo from answering, and then Tavril can no longer set it up."},
        Said{"ZeroLimit", "write max_load=0 --port /dev/nothing", 5, "max_load=0 allows nothing at all."},
        Said{"NoCommand", "--demo", 2, "no command was given."}),
    nameOf);

TEST(MessagesOfTavrilctl, TellAFileThatMayNotBeRead) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("settings.json"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  // To the superuser nothing is forbidden, but for a loop of links.
  ASSERT_TRUE(file.remove());
  ASSERT_TRUE(QFile::link(path, path));
  CtlProgram program(QStringLiteral("restore ") + path);
  expectSaid(program, 6, path.toStdString());
}

TEST(MessagesOfTavrilctl, TellAFileThatIsTooLarge) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("settings.json"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_TRUE(file.resize(qint64(1) << 30));
  file.close();
  CtlProgram program(QStringLiteral("restore ") + path);
  expectSaid(program, 6, "is too large: at most 1048576 bytes are read.");
}

TEST(MessagesOfTavrilctl, TellWhatAFileReplaces) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("settings.json"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  CtlProgram program(QStringLiteral("dump ") + path);
  expectSaid(program, 6, "already exists: name another file, or replace it with --force.");
}

TEST(MessagesOfTavrilctl, CountTheSettingsThatDiffer) {
  const QTemporaryDir folder;
  QStringList paths;
  for (const char *kp : {"5", "6"}) {
    paths.append(folder.filePath(QString::fromLatin1(kp)));
    QFile file(paths.back());
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("{\"format\": \"tavril-servo-settings\", \"version\": 1, \"settings\": {\"kp\": ") +
               kp + "}}");
  }
  CtlProgram program(QStringLiteral("diff ") + paths.join(u' '));
  expectSaid(program, 1, "1 of 1 setting differs.");
}

// Sanitizers need descriptors of their own: that of undefined behaviour takes objects for wrong that it
// cannot look at.
#if !defined(TAVRIL_SANITIZES_ADDRESS) && !defined(TAVRIL_SANITIZES_THREAD)
TEST(MessagesOfTavrilctl, TellThatTheVirtualServoCannotBeStarted) {
  // How many descriptors it has before depends on who starts it; of the limits one is that of the servo.
  Program program(
      QStringLiteral("/bin/sh"),
      {QStringLiteral("-c"),
       QStringLiteral(
           "for limit in $(seq 5 40); do (ulimit -n $limit; \"$0\" detect --demo --timeout 60000); done"),
       QStringLiteral(TAVRILCTL_PROGRAM)});
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_TRUE(
      std::regex_search(outcome.err, std::regex("tavrilctl: the virtual servo could not be started: .*: Too "
                                                "many open files. Close other programs and retry.")))
      << outcome.err;
}
#endif

// Qt's own threads, which are not built with the thread sanitizer, look like races to it.
#if !defined(TAVRIL_SANITIZES_THREAD)
TEST(MessagesOfTavril, TellThatThereIsNoDisplay) {
  Program program(QStringLiteral("/usr/bin/env"),
                  {QStringLiteral("-u"), QStringLiteral("DISPLAY"), QStringLiteral("-u"),
                   QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("-u"), QStringLiteral("QT_QPA_PLATFORM"),
                   QStringLiteral(TAVRIL_PROGRAM), QStringLiteral("--demo")});
  expectSaid(program, 1, "there is no display for the window: use --report, or --snapshot FILE.png.");
}

TEST(MessagesOfTavril, TellThatThePictureCannotBeWritten) {
  TavrilProgram program(
      {QStringLiteral("--demo"), QStringLiteral("--snapshot"), QStringLiteral("/nowhere/at/all.png")});
  expectSaid(program, 1, "name a .png file in a folder that you may write to.");
}
#endif

}  // namespace
}  // namespace tavril
