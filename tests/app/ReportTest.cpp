#include "app/Report.h"
#include "servo/MemoryLine.h"
#include "tests/app/LinkBench.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/WaitFor.h"

#include <QJsonDocument>
#include <QJsonObject>

#include <cstdint>

namespace tavril {
namespace {

using namespace std::chrono_literals;

/// How the bridge answers: the first question for the servo with the first of the texts and so on, in
/// hexadecimal digits, and that many registers with their number + 100.
struct Answers {
  QStringList detections;
  int registers = 0;
  std::chrono::seconds delay = 0s;  ///< of the answers to detections
};

QByteArray replyTo(int number) {
  QByteArray reply = QByteArray::fromHex("FF0791000000FE");
  reply[3] = static_cast<char>(number);
  if (number == 15) reply[4] = '\xFF';
  reply[5] = static_cast<char>(number == 15 ? -10 : number == 16 || number == 17 ? 0 : number + 100);
  return reply;
}

class ReportInTime : public testing::Test {
 protected:
  using Pieces = std::vector<servo::MemoryLine::Piece>;

  ReportOutcome reportOn(const Answers &given, ReportFormat format = ReportFormat::Table) {
    answers = given;
    return reportOf(line, 0s, QStringLiteral("usbport-test"), format, log);
  }
  Pieces answer(wire::Bytes sent) {
    EXPECT_EQ(sent.size(), 50U);
    const auto after = [](std::chrono::seconds delay, const QByteArray &bytes) {
      return Pieces{{delay + 1ms, std::vector<std::uint8_t>(bytes.begin(), bytes.end())}};
    };
    if (sent[2] == 0x90) {
      const qsizetype asked = detections++;
      if (asked >= answers.detections.size()) return {};
      return after(answers.delay, QByteArray::fromHex(answers.detections[asked].toLatin1()));
    }
    EXPECT_EQ(sent[2], 0x91);
    const int number = sent[3];
    if (refuses) return after(0s, QByteArray::fromHex("FF05F901FE"));
    if (number == shortRegister) return after(0s, QByteArray::fromHex("FF06910801FE"));
    return number <= answers.registers ? after(0s, replyTo(number)) : Pieces();
  }

  Answers answers;
  int detections = 0;
  int shortRegister = 0;
  bool refuses = false;  ///< to read registers, with an error report
  servo::MemoryLine line{[this](wire::Bytes sent) { return answer(sent); }};
  RecordingLog log;
};

const QStringList oneServo{"FF059001FE"};

TEST_F(ReportInTime, PrintsTheTwentyRegistersAsAnAlignedTable) {
  const ReportOutcome outcome = reportOn({oneServo, 20});
  EXPECT_TRUE(outcome.succeeded);
  const QStringList rows = outcome.text.split(u'\n', Qt::SkipEmptyParts);
  ASSERT_EQ(rows.size(), 20);
  EXPECT_EQ(rows[0], " 1  sid                  101");
  EXPECT_EQ(rows[9], "10  ki                   110");
  EXPECT_EQ(rows[14], "15  calibration_angle    -10");
  EXPECT_EQ(rows[15], "16  status_error         0 Items");
  EXPECT_EQ(rows[18], "19  present_temperature  119");
}

TEST_F(ReportInTime, PrintsTheTwentyRegistersAsJson) {
  const ReportOutcome outcome = reportOn({oneServo, 20}, ReportFormat::Json);
  const QJsonObject object = QJsonDocument::fromJson(outcome.text.toUtf8()).object();
  EXPECT_EQ(object.value("port").toString(), "usbport-test");
  const QJsonObject registers = object.value("registers").toObject();
  EXPECT_EQ(registers.size(), 20);
  EXPECT_EQ(registers.value("sid"), QJsonValue(101));
  EXPECT_EQ(registers.value("calibration_angle"), QJsonValue(-10));
  EXPECT_EQ(registers.value("status_error"), QJsonValue("0 Items"));
}

TEST_F(ReportInTime, LogsTheRepliesByteByByte) {
  reportOn({oneServo, 20});
  EXPECT_TRUE(log.lines().contains("StatusError=(255, 7, 145, 16, 0, 0, 254)"))
      << log.lines().join("\n").toStdString();
}

TEST_F(ReportInTime, NoServoAndSeveralServosAreToldApart) {
  const ReportOutcome outcome = reportOn({{"FF059000FE"}});
  EXPECT_TRUE(outcome.text.startsWith("no servo answered")) << outcome.text.toStdString();
}

TEST_F(ReportInTime, SeveralServosAreAnError) {
  const ReportOutcome outcome = reportOn({{"FF059002FE"}});
  EXPECT_TRUE(outcome.text.startsWith("more than one servo")) << outcome.text.toStdString();
  EXPECT_FALSE(outcome.succeeded);
}

TEST_F(ReportInTime, ASilentDeviceIsGivenUpAfterThirtySeconds) {
  const ReportOutcome outcome = reportOn({});
  EXPECT_TRUE(outcome.text.startsWith("no answer from usbport-test within 30 s"))
      << outcome.text.toStdString();
  EXPECT_EQ(line.now(), 30s + 20ms);
  EXPECT_EQ(detections, 1);
}

TEST_F(ReportInTime, AServoThatAnswersLateIsStillRead) {
  EXPECT_TRUE(reportOn({oneServo, 20, 29s}).succeeded);
}

TEST_F(ReportInTime, AServoThatFallsSilentIsGivenUpThirtySecondsLater) {
  const ReportOutcome outcome = reportOn({oneServo, 7, 20s});
  EXPECT_TRUE(outcome.text.contains("stopped answering after 7 of 20 registers"))
      << outcome.text.toStdString();
  EXPECT_GT(line.now(), 20s + 29s);
  EXPECT_LT(line.now(), 20s + 31s);
}

TEST_F(ReportInTime, RegistersWithoutAnAnsweredDetectionAreNoSuccess) {
  const ReportOutcome outcome = reportOn({{"FF059001", "FF059001"}, 20});
  EXPECT_EQ(outcome.text,
            "usbport-test answered, but did not tell whether exactly one servo is there: check the servo's "
            "cable and "
            "power, then retry.");
  EXPECT_FALSE(outcome.succeeded);
  EXPECT_EQ(detections, 2) << "once more, and once only";
}

TEST_F(ReportInTime, ADetectionThatIsAnsweredAtTheSecondAttemptIsMadeGood) {
  EXPECT_TRUE(reportOn({{"FF059001", "FF059001FE"}, 20}).succeeded);
}

TEST_F(ReportInTime, SeveralServosAtTheSecondAttemptAreAnError) {
  const ReportOutcome outcome = reportOn({{"FF059001", "FF059002FE"}, 20});
  EXPECT_TRUE(outcome.text.startsWith("more than one servo")) << outcome.text.toStdString();
}

TEST_F(ReportInTime, AnErrorReportBeforeTheDetectionIsAnsweredIsNotItsAnswer) {
  EXPECT_TRUE(reportOn({{"FF05F901FE", "FF059001FE"}, 20}).succeeded);
}

TEST_F(ReportInTime, ErrorReportsAloneAreGivenUpAfterThirtySeconds) {
  refuses = true;
  const ReportOutcome outcome = reportOn({{"FF05F901FE"}, 20});
  EXPECT_TRUE(outcome.text.startsWith("no answer from usbport-test within 30 s"))
      << outcome.text.toStdString();
  EXPECT_GE(line.now(), 30s);
  EXPECT_LT(line.now(), 32s);
}

TEST_F(ReportInTime, AReplyOneByteShortIsNotPrinted) {
  shortRegister = 8;
  const ReportOutcome outcome = reportOn({oneServo, 20});
  EXPECT_TRUE(outcome.text.contains("stopped answering after 7 of 20 registers"))
      << outcome.text.toStdString();
}

class ReportOnPty : public LinkBench {
 protected:
  ~ReportOnPty() override { report.reset(); }

  void start() {
    launch();
    report = std::make_unique<Report>(state, bench.environment, 0s, ReportFormat::Table,
                                      [this](const ReportOutcome &outcome) { outcomes.push_back(outcome); });
    report->start();
  }
  void startOnPty() {
    bench.devices.add("usbport-test", pty.path());
    start();
  }
  /// Runs what is queued until the outcome is there.
  bool ends(const std::function<void()> &meanwhile = [] {}) {
    return waitFor([&] {
      meanwhile();
      bench.mainQueue.runAll();
      return !outcomes.empty();
    });
  }
  QString onlyText() const {
    return outcomes.size() == 1 ? outcomes[0].text : QStringLiteral("no single outcome");
  }

  Pty pty;
  std::vector<ReportOutcome> outcomes;
  std::unique_ptr<Report> report;
};

TEST_F(ReportOnPty, ReadsTheFirstPort) {
  startOnPty();
  QByteArray received;
  EXPECT_TRUE(ends([&] {
    received += pty.readPending();
    if (received.size() < 50) return;
    const QByteArray command = received.first(50);
    received.remove(0, 50);
    pty.write(command[2] == '\x90' ? QByteArray::fromHex("FF059001FE") : replyTo(command[3]));
  }));
  EXPECT_TRUE(onlyText().startsWith(" 1  sid                  101\n")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, WithoutAPortItSaysWhatToDo) {
  start();
  ASSERT_EQ(outcomes.size(), 1u);
  EXPECT_FALSE(outcomes[0].succeeded);
  EXPECT_TRUE(onlyText().startsWith("there is no serial port"));
}

TEST_F(ReportOnPty, APortThatCannotBeOpenedIsExplained) {
  bench.terminal.fail(Call::Lock, EWOULDBLOCK);
  startOnPty();
  ASSERT_EQ(outcomes.size(), 1u);
  EXPECT_FALSE(outcomes[0].succeeded);
  EXPECT_TRUE(onlyText().contains("in use by another program")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, AnUnpluggedPortEndsTheReport) {
  startOnPty();
  EXPECT_EQ(pty.read(50).first(4), QByteArray::fromHex("FF0490FE"));
  pty.unplug();
  EXPECT_TRUE(ends());
  EXPECT_TRUE(onlyText().contains("was removed while it was being read")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, TellsNobodyWhenItIsGivenUpBefore) {
  startOnPty();
  EXPECT_EQ(pty.read(50).first(4), QByteArray::fromHex("FF0490FE"));
  report.reset();
  bench.mainQueue.runAll();
  EXPECT_TRUE(outcomes.empty());
}

}  // namespace
}  // namespace tavril
