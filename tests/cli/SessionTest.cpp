// Several commands with the port opened once, and how soon a single one is done.
#include "tests/cli/CtlProgram.h"
#include "tests/support/Ownership.h"
#include "tests/support/ScriptedBridge.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QJsonDocument>
#include <QJsonParseError>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <csignal>
#include <regex>

namespace tavril {
namespace {

class CtlSession : public testing::Test {
 protected:
  QString file(const char *name, const char *content) {
    QFile file(folder_.filePath(QString::fromLatin1(name)));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(content);
    return file.fileName();
  }
  Program::Outcome run(const QString &arguments) {
    CtlProgram program(arguments + CtlProgram::patientlyAt(servo_.path()));
    return program.outcome();
  }
  /// The same through a shell, which has the program as "$0" and the port as "$1".
  Program::Outcome sh(const char *script) {
    Program program(QStringLiteral("/bin/sh"), {QStringLiteral("-c"), QString::fromLatin1(script),
                                                QStringLiteral(TAVRILCTL_PROGRAM), servo_.path()});
    return program.outcome();
  }

  QTemporaryDir folder_;
  ServoProgram servo_{QStringList()};
};

TEST_F(CtlSession, CarriesOutTheCommandsOfAFile) {
  const QString script = file("setup.txt",
                              "# the gains\nwrite kp=441 ki=11\n\nread kp ki  # as they are now\n"
                              "move 520 --wait\nposition\n");
  expectSuccess(run(QStringLiteral("run ") + script),
                "kp: 440 -> 441\nki: 10 -> 11\n 9  kp  441\n10  ki  11\n520\n520\n");
}

TEST_F(CtlSession, StopsAtTheFirstFailureAndNamesItsLine) {
  const QString script = file("setup.txt", "write kp=441\nmove 9999\nwrite ki=11\n");
  const Program::Outcome outcome = run(QStringLiteral("run ") + script);
  EXPECT_EQ(outcome.status, 5);
  EXPECT_EQ(outcome.out, "kp: 440 -> 441\n");
  EXPECT_EQ(outcome.err, "tavrilctl: " + script.toStdString() +
                             ":2: position 9999 is out of range (0 to 1023, or 0deg to 300deg).\n");
}

TEST_F(CtlSession, GoesOnWhereItIsTold) {
  const QString script = file("setup.txt", "move 9999\nread kp\n");
  const Program::Outcome outcome = run(QStringLiteral("run --keep-going ") + script);
  EXPECT_EQ(outcome.status, 5);
  EXPECT_EQ(outcome.out, " 9  kp  440\n");
  EXPECT_TRUE(outcome.err.ends_with("tavrilctl: not all commands succeeded.\n")) << outcome.err;
}

TEST_F(CtlSession, ChecksAllCommandsBeforeTheFirst) {
  const QString script = file("setup.txt", "write kp=441\nraed kp\n");
  const Program::Outcome outcome = run(QStringLiteral("run ") + script);
  EXPECT_EQ(outcome.status, 2);
  EXPECT_NE(outcome.err.find("setup.txt:2: there is no command \"raed\""), std::string::npos) << outcome.err;
  expectSuccess(run(QStringLiteral("read kp")), " 9  kp  440\n");
}

TEST_F(CtlSession, TakesCommandsFromTheStandardInput) {
  const Program::Outcome outcome =
      sh("printf 'read kp\\nposition' | \"$0\" run - --port \"$1\" --timeout 60000");
  expectSuccess(outcome, " 9  kp  440\n512\n");
  expectSuccess(sh("printf 'read kp\\n' | \"$0\" shell --port \"$1\" --timeout 60000"), " 9  kp  440\n");
}

/// The shell on a terminal of its own, as only there a line is edited; its exit status is that of the
/// outcome. The "exec" leaves no other shell between, which Ctrl-C would end.
class ShellOnTerminal : public Program {
 public:
  /// Its history is below `stateFolder`, if there is one, and its number in the file `number` there.
  ShellOnTerminal(const QString &port, const QString &options, const QString &stateFolder = {})
      : Program(
            QStringLiteral("/bin/sh"),
            {QStringLiteral("-c"),
             QStringLiteral("HOME= XDG_STATE_HOME='%1' TERM=dumb exec script -qec \"%2exec '$0' shell "
                            "--port $1 %3\" /dev/null")
                 .arg(stateFolder,
                      stateFolder.isEmpty() ? QString()
                                            : QStringLiteral("echo \\$\\$ >'%1/number'; ").arg(stateFolder),
                      options),
             QStringLiteral(TAVRILCTL_PROGRAM), port}) {}
};

TEST_F(CtlSession, HasAShellWithHistoryThatGoesOnAfterCtrlCAndFailures) {
  ShellOnTerminal program(servo_.path(), QStringLiteral("--timeout 60000"), folder_.path());
  const std::string prompt = "tavril> ";
  ASSERT_TRUE(program.showsNext(prompt)) << program.outcome().err;
  program.type("read kp\n");
  ASSERT_TRUE(program.showsNext(" 9  kp  440") && program.showsNext(prompt));
  program.type("half a li");
  ASSERT_TRUE(program.showsNext("half a li"));
  program.type("\x03");
  ASSERT_TRUE(program.showsNext("^C") && program.showsNext(prompt));
  program.type("move 9999\n");
  ASSERT_TRUE(program.showsNext("position 9999 is out of range") && program.showsNext(prompt));
  program.type("wri\t");
  ASSERT_TRUE(program.showsNext("write "));
  program.type("ki=11\n");
  ASSERT_TRUE(program.showsNext("ki: 10 -> 11") && program.showsNext(prompt));
  // The line before the line before the last.
  program.type("\x10\x10\x10\n");
  ASSERT_TRUE(program.showsNext(" 9  kp  440") && program.showsNext(prompt));
  program.type("\x04");
  EXPECT_EQ(program.outcome().status, 0) << program.outcome().out;
  QFile history(folder_.filePath(QStringLiteral("tavril/history")));
  ASSERT_TRUE(history.open(QIODevice::ReadOnly));
  const QByteArray kept = history.readAll();
  EXPECT_EQ(kept, "read kp\nmove 9999\nwrite ki=11\nread kp\n") << kept.toStdString();
  EXPECT_EQ(QFileInfo(history.fileName()).permissions() & (QFile::ReadGroup | QFile::ReadOther),
            QFile::Permissions());
}

TEST_F(CtlSession, EndsItsShellAtASignalWithTheStatusThatSaysSo) {
  ShellOnTerminal shell(servo_.path(), QStringLiteral("--timeout 60000"), folder_.path());
  ASSERT_TRUE(shell.showsNext("tavril> ")) << shell.outcome().err;
  QFile number(folder_.filePath(QStringLiteral("number")));
  ASSERT_TRUE(number.open(QIODevice::ReadOnly));
  const int process = number.readAll().trimmed().toInt();
  ASSERT_GT(process, 1);
  ASSERT_EQ(::kill(process, SIGTERM), 0);
  EXPECT_EQ(shell.outcome().status, 143) << shell.outcome().out;
}

TEST(CtlShell, EndsAtCtrlCWhileItWaitsForTheBridge) {
  ScriptedBridge bridge{ScriptedBridge::mute};
  ShellOnTerminal shell(bridge.path(), QStringLiteral("--boot-wait 600"));
  ASSERT_TRUE(waitFor([&] { return !bridge.commands().empty(); }));
  shell.type("\x03");
  EXPECT_EQ(shell.outcome().status, 130) << shell.outcome().out;
}

TEST_F(CtlSession, ShowsOnePromptInItsShellAfterACommandThatCtrlCEnded) {
  ShellOnTerminal shell(servo_.path(), QStringLiteral("--timeout 60000"), folder_.path());
  ASSERT_TRUE(shell.showsNext("tavril> ")) << shell.outcome().err;
  shell.type("monitor --interval 3600s\n");
  ASSERT_TRUE(shell.showsNext("position"));
  ASSERT_TRUE(shell.showsNext("detail"));
  shell.type("\x03");
  ASSERT_TRUE(shell.showsNext("interrupted.") && shell.showsNext("tavril> "));
  shell.type("position\n");
  ASSERT_TRUE(shell.showsNext("512") && shell.showsNext("tavril> "));
  shell.type("\x04");
  const std::string shown = shell.outcome().out;
  EXPECT_EQ(shell.outcome().status, 0);
  const QString text = QString::fromStdString(shown);
  EXPECT_EQ(text.count(QStringLiteral("tavril> ")), 3) << shown;
}

TEST_F(CtlSession, KeepsTheHistoryOfTwoShells) {
  const ServoProgram second{QStringList()};
  ShellOnTerminal one(servo_.path(), QStringLiteral("--timeout 60000"), folder_.path());
  ASSERT_TRUE(one.showsNext("tavril> "));
  ShellOnTerminal other(second.path(), QStringLiteral("--timeout 60000"), folder_.path());
  ASSERT_TRUE(other.showsNext("tavril> "));
  one.type("read kp\n");
  ASSERT_TRUE(one.showsNext("440") && one.showsNext("tavril> "));
  other.type("read ki\n");
  ASSERT_TRUE(other.showsNext("10") && other.showsNext("tavril> "));
  one.type("\x04");
  EXPECT_EQ(one.outcome().status, 0);
  other.type("\x04");
  EXPECT_EQ(other.outcome().status, 0);
  QFile history(folder_.filePath(QStringLiteral("tavril/history")));
  ASSERT_TRUE(history.open(QIODevice::ReadOnly));
  EXPECT_EQ(history.readAll(), "read kp\nread ki\n");
}

TEST_F(CtlSession, TakesThePortFromTheEnvironment) {
  expectSuccess(sh("TAVRIL_PORT=\"$1\" \"$0\" read kp --timeout 60000"), " 9  kp  440\n");
  // What is on the command line comes first.
  expectSuccess(sh("TAVRIL_PORT=/dev/nothing \"$0\" read kp -p \"$1\" --timeout 60000"), " 9  kp  440\n");
  expectSuccess(sh("TAVRIL_PORT=/dev/nothing \"$0\" read kp --demo --timeout 60000"), " 9  kp  440\n");
}

TEST_F(CtlSession, TakesTheNamesThatItPrintsForThePort) {
  const QString printed = QString::fromStdString(portName(servo_.path()));
  CtlProgram program(QStringLiteral("read kp --timeout 60000 --port ") + printed);
  expectSuccess(program.outcome(), " 9  kp  440\n");
}

TEST_F(CtlSession, PrintsDataAndErrorsOnlyWhenQuiet) {
  const QString settings = folder_.filePath(QStringLiteral("servo.json"));
  expectSuccess(run(QStringLiteral("dump ") + settings), "");
  EXPECT_EQ(run(QStringLiteral("restore ") + settings).err, "The servo has these settings already.\n");
  expectSuccess(run(QStringLiteral("restore -q ") + settings), "");
}

TEST_F(CtlSession, RestoresAllButTheExceptedSettings) {
  const QString settings = folder_.filePath(QStringLiteral("servo.json"));
  EXPECT_EQ(run(QStringLiteral("write sid=7 kp=441")).status, 0);
  EXPECT_EQ(run(QStringLiteral("dump ") + settings).status, 0);
  EXPECT_EQ(run(QStringLiteral("reset --yes")).status, 0);
  const Program::Outcome outcome = run(QStringLiteral("restore --except sid ") + settings);
  EXPECT_EQ(outcome.status, 0) << outcome.err;
  EXPECT_EQ(outcome.out, "kp: 440 -> 441\n");
}

TEST_F(CtlSession, SetsTheId) {
  expectSuccess(run(QStringLiteral("set-id 42")), "sid: 1 -> 42\n");
  EXPECT_EQ(run(QStringLiteral("set-id 254")).status, 5);
}

TEST_F(CtlSession, HasOneFormForRegistersInJson) {
  const std::string kp = R"({"number": 9, "value": 441, "scaled": null, "unit": "", "meaning": ""})";
  const std::string period =
      R"({"number": 14, "value": 30, "scaled": 300, "unit": "ms", "meaning": "300 ms"})";
  const auto expectIn = [&](const char *arguments, const std::string &text, int status = 0) {
    const Program::Outcome outcome = run(QString::fromLatin1(arguments));
    EXPECT_EQ(outcome.status, status) << outcome.err;
    EXPECT_NE(outcome.out.find(text), std::string::npos) << arguments << ": " << outcome.out;
    QJsonParseError problem{};
    QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out), &problem);
    EXPECT_EQ(problem.error, QJsonParseError::NoError) << arguments << ": " << outcome.out;
  };
  const QString settings =
      file("servo.json", R"({"format": "tavril-servo-settings", "version": 1, "settings": {"kp": 500}})");
  expectIn("write kp=441 --json", "\"to\": " + kp);
  expectIn("read kp over_load --json", "\"kp\": " + kp + ",\n    \"over_load\": " + period);
  expectIn(qPrintable(QStringLiteral("diff --json ") + settings), "\"kp\": [" + kp + ", ", 1);
  expectIn(qPrintable(QStringLiteral("restore -n --json ") + settings), "{\"from\": " + kp);
  expectIn(
      "monitor --json --count 1",
      R"("present_temperature": {"number": 19, "value": 27, "scaled": 27, "unit": "°C", "meaning": "27 °C"})");
  expectIn("position --json", "\"position\": 512, \"degrees\": 150.1}");
  expectIn("detect --json", "\"servos\": \"one\"}");
  expectIn("send --json FF 05 91 09 FE",
           R"("sent": "FF 05 91 09 FE", "reply": "FF 07 91 09 01 B9 FE", "meaning": "kp is 441")");
  EXPECT_TRUE(
      std::regex_match(run(QStringLiteral("monitor --json --count 2 --interval 1")).out,
                       std::regex("(\\{\"time\": \"\\d{4}-\\d\\d-\\d\\dT\\d\\d:\\d\\d:\\d\\d\\.\\d{3}Z\", "
                                  "\"position\": .*\\}\n){2}")));
}

/// The frames after the detection wait for their turn: a bridge that is up is asked at once.
TEST(CtlStart, AsksABridgeThatIsUpAtOnce) {
  ScriptedBridge bridge;
  CtlProgram program(QStringLiteral("read sid --timeout 60000 --port ") + bridge.path());
  expectSuccess(program.outcome(), " 1  sid  42\n");
  // On a machine that is slow it may be asked again.
  ASSERT_GE(bridge.commands().size(), 2U);
  EXPECT_EQ(bridge.commands().front(), 0);
  EXPECT_EQ(bridge.commands().back(), 1);
}

}  // namespace
}  // namespace tavril
