#include "tests/simulator/SlaveTerminal.h"

#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QProcess>
#include <QRegularExpression>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <signal.h>

namespace tavril::simulator {
namespace {

const Bytes detect{0xFF, 0x04, 0x90, 0xFE};
const Bytes detected{0xFF, 0x05, 0x90, 0x01, 0xFE};
constexpr int patience_ms = 60'000;

/// Runs tavril-servo as a user would.
class ProgramTest : public testing::Test {
 protected:
  ~ProgramTest() override {
    if (program_.state() == QProcess::NotRunning) return;
    program_.kill();
    program_.waitForFinished(patience_ms);
  }

  void run(const QStringList &arguments) {
    program_.start(QCoreApplication::applicationDirPath() + QStringLiteral("/tavril-servo"), arguments);
  }
  /// The terminal's path, as the program prints it; empty when it does not.
  QString printedPath() {
    while (!program_.canReadLine()) {
      if (!program_.waitForReadyRead(patience_ms)) return {};
    }
    return QString::fromLocal8Bit(program_.readLine()).trimmed();
  }
  /// Whether the program ends by itself and with this exit code. What it said on standard error stands in the
  /// message if not, for that is where a sanitizer reports, and can be read in standardError_ either way.
  testing::AssertionResult endsWith(int exitCode) {
    const bool ended = program_.state() == QProcess::NotRunning || program_.waitForFinished(patience_ms);
    standardError_ += program_.readAllStandardError();
    const auto failure = [this] {
      return testing::AssertionFailure() << "standard error:\n" << standardError_.toStdString() << '\n';
    };
    if (!ended) return failure() << "it does not end";
    if (program_.exitStatus() != QProcess::NormalExit) return failure() << "it crashed";
    if (program_.exitCode() != exitCode) return failure() << "its exit code is " << program_.exitCode();
    return testing::AssertionSuccess();
  }
  QString path(const QString &name) const { return folder_.filePath(name); }

  QTemporaryDir folder_;
  QProcess program_;
  QByteArray standardError_;
};

TEST_F(ProgramTest, AnswersThroughItsLinkAndTakesTheLinkAwayWhenTerminated) {
  const QString link = path(QStringLiteral("servo"));
  run({QStringLiteral("--link"), link});
  const QString terminal = printedPath();
  ASSERT_TRUE(terminal.startsWith(QStringLiteral("/dev/pts/"))) << terminal.toStdString();
  EXPECT_EQ(QFileInfo(link).symLinkTarget(), terminal);
  {
    const SlaveTerminal host(link);
    ASSERT_TRUE(host.isOpen());
    EXPECT_EQ(host.exchange(detect, 5), detected);
    EXPECT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x08, 0xFE}, 7),
              (Bytes{0xFF, 0x07, 0x91, 0x08, 0x01, 0x90, 0xFE}));
  }
  program_.terminate();
  EXPECT_TRUE(endsWith(0));
  EXPECT_FALSE(QFileInfo(link).isSymbolicLink());
}

TEST_F(ProgramTest, TakesTheLinkAwayWhenInterrupted) {
  const QString link = path(QStringLiteral("servo"));
  run({QStringLiteral("--link"), link});
  ASSERT_FALSE(printedPath().isEmpty());
  ASSERT_TRUE(QFileInfo(link).isSymbolicLink());
  ASSERT_EQ(::kill(static_cast<pid_t>(program_.processId()), SIGINT), 0);
  EXPECT_TRUE(endsWith(0));
  EXPECT_FALSE(QFileInfo(link).isSymbolicLink());
}

TEST_F(ProgramTest, LogsEachCommandWithATimeStamp) {
  run({QStringLiteral("--log"), path(QStringLiteral("traffic.log"))});
  const SlaveTerminal host(printedPath());
  ASSERT_TRUE(host.isOpen());
  ASSERT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x01, 0xFE}, 7).size(), 7U);
  program_.terminate();
  ASSERT_TRUE(endsWith(0));
  QFile log(path(QStringLiteral("traffic.log")));
  ASSERT_TRUE(log.open(QIODevice::ReadOnly));
  const QStringList lines = QString::fromUtf8(log.readAll()).split(u'\n', Qt::SkipEmptyParts);
  ASSERT_EQ(lines.size(), 2);
  const QString stamp = QStringLiteral("^\\d{4}-\\d\\d-\\d\\d \\d\\d:\\d\\d:\\d\\d\\.\\d{3} ");
  EXPECT_TRUE(
      QRegularExpression(stamp + QStringLiteral("-> FF 05 91 01 FE  read register 1  \\(50 bytes\\)$"))
          .match(lines[0])
          .hasMatch())
      << lines[0].toStdString();
  EXPECT_TRUE(QRegularExpression(stamp + QStringLiteral("<- FF 07 91 01 00 01 FE  register 1 is 1$"))
                  .match(lines[1])
                  .hasMatch())
      << lines[1].toStdString();
}

TEST_F(ProgramTest, LogsToStandardErrorByDefault) {
  run({});
  const SlaveTerminal host(printedPath());
  ASSERT_EQ(host.exchange(detect, 5), detected);
  program_.terminate();
  ASSERT_TRUE(endsWith(0));
  EXPECT_TRUE(standardError_.contains("-> FF 04 90 FE  detect the servo  (50 bytes)\n"));
}

TEST_F(ProgramTest, MisbehavesAsAsked) {
  run({QStringLiteral("--no-servo"), QStringLiteral("--no-pace")});
  const SlaveTerminal host(printedPath());
  EXPECT_EQ(host.exchange(detect, 5), (Bytes{0xFF, 0x05, 0x90, 0x00, 0xFE}));
  EXPECT_EQ(host.exchange({0xFF, 0x04, 0x97, 0xFE}, 5), (Bytes{0xFF, 0x05, 0xF9, 0x04, 0xFE}));
}

TEST_F(ProgramTest, HangsUpAndEndsAfterTheFramesNamed) {
  const QString link = path(QStringLiteral("servo"));
  run({QStringLiteral("--unplug-after"), QStringLiteral("2"), QStringLiteral("--link"), link});
  const SlaveTerminal host(printedPath());
  EXPECT_EQ(host.exchange(detect, 5), detected);
  ASSERT_TRUE(host.writeDelivery(detect));
  EXPECT_TRUE(host.hungUp());
  EXPECT_TRUE(endsWith(0));
  EXPECT_FALSE(QFileInfo(link).isSymbolicLink());
}

TEST_F(ProgramTest, KeepsItsSettingsInAFileFromOneStartToTheNext) {
  const QString state = path(QStringLiteral("state.json"));
  run({QStringLiteral("--state"), state});
  {
    const SlaveTerminal host(printedPath());
    EXPECT_EQ(host.exchange({0xFF, 0x07, 0x92, 0x08, 0x01, 0x2C, 0xFE}, 5),
              (Bytes{0xFF, 0x05, 0x92, 0x08, 0xFE}));
  }
  program_.terminate();
  ASSERT_TRUE(endsWith(0));
  run({QStringLiteral("--state"), state});
  const SlaveTerminal host(printedPath());
  EXPECT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x08, 0xFE}, 7),
            (Bytes{0xFF, 0x07, 0x91, 0x08, 0x01, 0x2C, 0xFE}));
}

TEST_F(ProgramTest, SavesItsSettingsAgainAfterItCouldNot) {
  const QString state = path(QStringLiteral("later/state.json"));
  run({QStringLiteral("--state"), state});
  const SlaveTerminal host(printedPath());
  ASSERT_TRUE(QDir().mkpath(path(QStringLiteral("later"))));
  EXPECT_EQ(host.exchange(detect, 5), detected);
  program_.terminate();
  ASSERT_TRUE(endsWith(0));
  EXPECT_TRUE(QFileInfo::exists(state));
  EXPECT_EQ(standardError_.count("the settings could not be saved: "), 1);
}

TEST_F(ProgramTest, EndsWithAFailureWhereItsSettingsAreLost) {
  run({QStringLiteral("--state"), path(QStringLiteral("missing/state.json"))});
  const SlaveTerminal host(printedPath());
  EXPECT_EQ(host.exchange(detect, 5), detected);
  program_.terminate();
  EXPECT_TRUE(endsWith(1));
  EXPECT_EQ(standardError_.count("the settings could not be saved: "), 1) << standardError_.toStdString();
}

TEST_F(ProgramTest, StartsFromAFileAndLeavesItAsItIs) {
  QFile file(path(QStringLiteral("from.json")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("{\"settings\": {\"max_load\": 300}}");
  file.close();
  run({QStringLiteral("--from"), file.fileName()});
  {
    const SlaveTerminal host(printedPath());
    EXPECT_EQ(host.exchange({0xFF, 0x05, 0x91, 0x08, 0xFE}, 7),
              (Bytes{0xFF, 0x07, 0x91, 0x08, 0x01, 0x2C, 0xFE}));
    EXPECT_EQ(host.exchange({0xFF, 0x07, 0x92, 0x08, 0x00, 0x01, 0xFE}, 5),
              (Bytes{0xFF, 0x05, 0x92, 0x08, 0xFE}));
  }
  program_.terminate();
  ASSERT_TRUE(endsWith(0));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), "{\"settings\": {\"max_load\": 300}}");
}

TEST_F(ProgramTest, SaysWhatIsWrongWithTheFileItShallStartFrom) {
  run({QStringLiteral("--from"), path(QStringLiteral("missing.json"))});
  EXPECT_TRUE(endsWith(1));
  EXPECT_TRUE(standardError_.startsWith("tavril-servo: ")) << standardError_.toStdString();
  EXPECT_TRUE(standardError_.contains("missing.json: No such file or directory"));
}

TEST_F(ProgramTest, RefusesToReplaceAFileByItsLink) {
  QFile file(path(QStringLiteral("notes")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.close();
  run({QStringLiteral("--link"), file.fileName()});
  EXPECT_TRUE(endsWith(1));
  EXPECT_TRUE(standardError_.contains("exists and is not a symbolic link"));
  EXPECT_TRUE(program_.readAllStandardOutput().isEmpty());
  EXPECT_TRUE(QFileInfo(file.fileName()).isFile());
}

TEST_F(ProgramTest, SaysWhenItsLogCannotBeWritten) {
  run({QStringLiteral("--log"), path(QStringLiteral("missing/traffic.log"))});
  EXPECT_TRUE(endsWith(1));
  EXPECT_TRUE(standardError_.contains("cannot write"));
}

TEST_F(ProgramTest, EndsWithTwoOnBadArguments) {
  run({QStringLiteral("--split"), QStringLiteral("many")});
  EXPECT_TRUE(endsWith(2));
  EXPECT_EQ(standardError_, QByteArray("tavril-servo: --split takes a number from 1 to 50, not 'many'.\n"
                                       "Try 'tavril-servo --help'.\n"));
}

TEST_F(ProgramTest, ShowsItsVersion) {
  run({QStringLiteral("--version")});
  EXPECT_TRUE(endsWith(0));
  EXPECT_TRUE(QRegularExpression(QStringLiteral("^tavril-servo \\d+\\.\\d+\\.\\d+\n$"))
                  .match(QString::fromUtf8(program_.readAllStandardOutput()))
                  .hasMatch());
}

}  // namespace
}  // namespace tavril::simulator
