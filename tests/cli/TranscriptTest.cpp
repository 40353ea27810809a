// Every command against the virtual servo on a pseudo-terminal, with everything that can happen to replies.
#include "tests/cli/CtlProgram.h"
#include "tests/support/TestFiles.h"

#include <QByteArray>
#include <QFile>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonValue>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <functional>
#include <regex>

namespace tavril {
namespace {

/// For lines that lose nothing: how soon a reply comes is up to the machine, but one comes. A try that is not
/// needed takes no time.
constexpr auto manyTries = "--retries 50";

/// So many runs of a command on a line that loses replies. A busy machine makes late ones of others.
constexpr int runs = 100;

/// What may happen to replies, and how patient that asks to be.
struct Line {
  const char *name;
  const char *faults;
  const char *patience;
  bool mayLose;  ///< so much that a command may be left without an answer
};

std::ostream &operator<<(std::ostream &out, const Line &line) {
  return out << line.name;
}

class Transcript : public testing::TestWithParam<Line> {
 protected:
  Transcript() { EXPECT_NE(servo_.path(), QString()); }

  /// Runs the command until it is answered and expects this of it. Where the line loses replies, a run may
  /// also end with a word about that; then nothing wrong may have been printed.
  void expect(const QString &command, const std::string &out, int status = 0) {
    expectThat(
        command, [&](const std::string &printed) { return printed == out; }, status);
  }

  void expectThat(const QString &command, const std::function<bool(const std::string &)> &isRight,
                  int status = 0) {
    for (int tries = 1; tries <= runs; ++tries) {
      CtlProgram program(command + CtlProgram::at(servo_.path()) + u' ' +
                         QString::fromLatin1(GetParam().patience));
      const Program::Outcome &outcome = program.outcome();
      const bool gaveUp = outcome.status == 6 && outcome.err.find("no answer from") != std::string::npos;
      if (gaveUp && GetParam().mayLose) continue;
      EXPECT_EQ(outcome.status, status) << command.toStdString() << ": " << outcome.err;
      EXPECT_TRUE(isRight(outcome.out)) << command.toStdString() << " printed:\n" << outcome.out;
      return;
    }
    ADD_FAILURE() << command.toStdString() << " got no answer in " << runs << " runs";
  }

  /// A run that gave up may have made some of the changes: then the next one finds the new values already
  /// there, and `restore` does not name them.
  void expectChanges(const QString &command, const std::string &changes) {
    expectThat(command, [&](const std::string &printed) {
      if (!GetParam().mayLose) return printed == changes;
      return std::regex_match(printed, std::regex("(kp: (440|32766) -> 32766\n)?"
                                                  "(calibration_angle: (0|-10) -> -10\n)?"
                                                  "(sid: (1|42) -> 42\n)?"));
    });
  }

  QString file(const char *name) const { return folder_.filePath(QString::fromLatin1(name)); }

 private:
  QTemporaryDir folder_;
  ServoProgram servo_{QString::fromLatin1(GetParam().faults).split(u' ', Qt::SkipEmptyParts)};
};

TEST_P(Transcript, OfEveryCommandHasTheRightValues) {
  const QString first = file("first.json");
  const QString second = file("second.json");
  expect(QStringLiteral("detect"), "one\n");
  expect(QStringLiteral("read kp 8 status_error"),
         " 9  kp            440\n 8  max_load      400\n16  status_error  0    none\n");
  const std::string changes = "kp: 440 -> 32766\ncalibration_angle: 0 -> -10\nsid: 1 -> 42\n";
  expectChanges(QStringLiteral("write kp=32766 calibration_angle=-10 sid=42"), changes);
  expectThat(QStringLiteral("read kp calibration_angle --json"), [](const std::string &out) {
    return out.find("\"kp\": {\"number\": 9, \"value\": 32766,") != std::string::npos &&
           out.find("\"calibration_angle\": {\"number\": 15, \"value\": -10,") != std::string::npos;
  });
  expect(QStringLiteral("dump ") + first, "");
  expect(QStringLiteral("diff ") + first, "");
  expect(QStringLiteral("reset --yes"), "");
  expectThat(
      QStringLiteral("diff ") + first,
      [](const std::string &out) {
        return std::regex_match(out, std::regex("SETTING +servo +\\S+\nsid +1 +42\nkp +440 +32766\n"
                                                "calibration_angle +0 +-10\n"));
      },
      1);
  expect(QStringLiteral("restore --dry-run ") + first, changes);
  expectChanges(QStringLiteral("restore ") + first, changes);
  expect(QStringLiteral("dump ") + second, "");
  EXPECT_EQ(contentOf(second), contentOf(first));
  EXPECT_TRUE(contentOf(second).contains("\"value\": 32766"));
  expect(QStringLiteral("move 560 --wait"), "560\n");
  expect(QStringLiteral("position"), "560\n");
  expectThat(QStringLiteral("monitor --count 2 --interval 0"), [](const std::string &out) {
    const std::string line =
        " +\\d+\\.\\d{3} s  position  560  voltage  7[34]  temperature  2[78]  load  [12]\\d  "
        "error none  detail In position\n";
    return std::regex_match(out, std::regex(line + line));
  });
  expect(QStringLiteral("send FF 05 91 09 FE"), "FF 07 91 09 7F FE FE  kp is 32766\n");
  expect(QStringLiteral("release"), "");
  expectThat(QStringLiteral("read status_detail"),
             [](const std::string &out) { return out.find("17  status_detail  64  ") == 0; });
  expect(QStringLiteral("reboot --yes"), "");
  expect(QStringLiteral("read status_detail"), "17  status_detail  32  In position\n");
}

INSTANTIATE_TEST_SUITE_P(
    OverALine, Transcript,
    testing::Values(Line{"AsItShouldBe", "", manyTries, false},
                    Line{"ThatSplitsIntoBytes", "--split 1 --split-gap 1", manyTries, false},
                    // The first reply waits for the second, which there is only because the first is late.
                    Line{"ThatGlues", "--glue", "--timeout 60 --retries 50", false},
                    Line{"WithNoise", "--noise --seed 7", manyTries, false},
                    Line{"WhereAllIsLate", "--delay 130", "--timeout 100 --retries 50", false},
                    Line{"ThatLosesOneInFive", "--lose 5 --seed 1", "--timeout 100", true},
                    Line{"ThatLosesOtherOnes", "--lose 5 --seed 2", "--timeout 100", true},
                    Line{"WithAllOfIt", "--lose 5 --noise --split 2 --split-gap 1 --delay 60 --seed 3",
                         "--timeout 50 --retries 20", true}),
    [](const auto &line) { return std::string(line.param.name); });

TEST(TavrilCtl, ReadsAllTwentyRegistersInTheirOrder) {
  ServoProgram servo{QStringList()};
  CtlProgram program(QStringLiteral("read") + CtlProgram::patientlyAt(servo.path()));
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  EXPECT_EQ(
      outcome.out.find(" 1  sid                  1\n 2  ack_policy           2     answers all commands\n"),
      0U)
      << outcome.out;
  EXPECT_EQ(std::count(outcome.out.begin(), outcome.out.end(), '\n'), 20);
}

TEST(TavrilCtl, ListsPorts) {
  CtlProgram program(QStringLiteral("ports --demo --json"));
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_NE(outcome.out.find("{\"name\": \"usbport-pts-"), std::string::npos) << outcome.out;
  EXPECT_TRUE(QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).isArray()) << outcome.out;
}

TEST(TavrilCtl, ShowsFramesOnTheSideWhenVerbose) {
  CtlProgram program(QStringLiteral("write max_load=300 --verbose --demo --timeout 60000"));
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.out, "max_load: 400 -> 300\n");
  EXPECT_EQ(outcome.err,
            "-> FF 04 90 FE  detect the servo\n"
            "<- FF 05 90 01 FE  one servo\n"
            "-> FF 05 91 08 FE  read max_load\n"
            "<- FF 07 91 08 01 90 FE  max_load is 400\n"
            "-> FF 05 91 14 FE  read present_load\n"
            "<- FF 07 91 14 00 14 FE  present_load is 20\n"
            "-> FF 07 92 08 01 2C FE  write 300 to max_load\n"
            "<- FF 05 92 08 FE  max_load written\n"
            "-> FF 05 91 08 FE  read max_load\n"
            "<- FF 07 91 08 01 2C FE  max_load is 300\n");
}

TEST(TavrilCtl, ShowsTheFramesOfADryRunWithoutAnyPort) {
  CtlProgram program(
      QStringLiteral("write max_load=300 calibration_angle=-10 --dry-run --port /dev/nothing"));
  expectSuccess(program.outcome(),
                "FF 07 92 08 01 2C FE  write 300 to max_load\n"
                "FF 07 92 0F FF F6 FE  write -10 to calibration_angle\n");
}

TEST(TavrilCtl, ShowsTheFramesOfADryRunInJson) {
  for (const char *arguments : {"write kp=441 ki=11 --dry-run --json", "set-id 42 --dry-run --json"}) {
    CtlProgram program(QString::fromLatin1(arguments));
    const Program::Outcome &outcome = program.outcome();
    EXPECT_EQ(outcome.status, 0) << outcome.err;
    const QJsonArray frames = QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).array();
    ASSERT_FALSE(frames.isEmpty()) << outcome.out;
    for (const QJsonValue &frame : frames) {
      EXPECT_TRUE(frame[u"sent"].toString().startsWith(u"FF 07 92 ")) << outcome.out;
      EXPECT_TRUE(frame[u"meaning"].toString().startsWith(u"write ")) << outcome.out;
    }
  }
}

TEST(TavrilCtl, KeepsTheSamplesInAFile) {
  const QTemporaryDir folder;
  const QString csv = folder.filePath(QStringLiteral("samples.csv"));
  const QString command =
      QStringLiteral("monitor --count 3 --interval 1 --demo --timeout 60000 --csv ") + csv;
  CtlProgram program(command);
  EXPECT_EQ(program.outcome().status, 0) << program.outcome().err;
  EXPECT_TRUE(std::regex_match(
      contentOf(csv).toStdString(),
      std::regex("time_s,position,present_voltage,present_temperature,present_load,"
                 "status_error,status_detail\n(\\d+\\.\\d{3},512,7\\d,2\\d,\\d+,0,32\n){3}")))
      << contentOf(csv).toStdString();
  CtlProgram again(command);
  EXPECT_EQ(again.outcome().status, 6);
  EXPECT_NE(again.outcome().err.find("already exists"), std::string::npos);
  CtlProgram forced(command + QStringLiteral(" --force"));
  EXPECT_EQ(forced.outcome().status, 0);
}

TEST(TavrilCtl, ComparesTwoFilesWithoutAnyPort) {
  const QTemporaryDir folder;
  const auto write = [&](const char *name, const char *settings) {
    QFile file(folder.filePath(QString::fromLatin1(name)));
    EXPECT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(QByteArray("{\"format\": \"tavril-servo-settings\", \"version\": 1, \"settings\": {") +
               settings + "}}");
    return file.fileName();
  };
  const QString one = write("one", "\"kp\": 1, \"ki\": 2");
  const QString other = write("other", "\"kp\": 1, \"ki\": 3, \"kd\": 4");
  CtlProgram same(QStringLiteral("diff %1 %1").arg(one));
  expectSuccess(same.outcome(), "");
  CtlProgram different(QStringLiteral("diff %1 %2").arg(one, other));
  EXPECT_EQ(different.outcome().status, 1);
  EXPECT_TRUE(std::regex_match(different.outcome().out, std::regex("SETTING.*\nki +2 +3\nkd +- +4\n")))
      << different.outcome().out;
}

}  // namespace
}  // namespace tavril
