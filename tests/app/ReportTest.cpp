#include "app/Report.h"
#include "tests/app/LinkBench.h"
#include "tests/support/WaitFor.h"

#include <QJsonDocument>
#include <QJsonObject>

namespace tavril {
namespace {

using namespace std::chrono_literals;

class ReportOnPty : public LinkBench {
 protected:
  void start(ReportFormat format = ReportFormat::Table) {
    launch();
    report =
        std::make_unique<Report>(state, *application, desktop, format,
                                 [this](const Report::Outcome &outcome) { outcomes.push_back(outcome); });
    report->start();
  }
  void startOnPty(ReportFormat format = ReportFormat::Table) {
    bench.devices.add("usbport-test", pty.path());
    start(format);
  }
  /// Answers the detection and then every read with register number + 100, as often as asked.
  void answer(const char *detection, int registers) {
    ASSERT_TRUE(bench.mainQueue.runUntil([&] { return wait.waits.size() == 2; }));
    ASSERT_EQ(pty.read(50).size(), 50);
    pty.write(QByteArray::fromHex(detection));
    for (int number = 1; number <= registers; ++number) {
      ASSERT_TRUE(bench.mainQueue.runNext());
      const QByteArray request = pty.read(50);
      ASSERT_EQ(request.at(3), static_cast<char>(number));
      QByteArray reply = QByteArray::fromHex("FF079100");
      reply[3] = static_cast<char>(number);
      reply += '\0';
      reply += static_cast<char>(number == 15 ? -10 : number == 16 || number == 17 ? 0 : number + 100);
      reply += '\xFE';
      pty.write(reply);
    }
    ASSERT_TRUE(bench.mainQueue.runNext());
    timers.advance(10ms);
  }
  QString onlyText() const {
    return outcomes.size() == 1 ? outcomes[0].text : QStringLiteral("no single outcome");
  }

  Pty pty;
  std::vector<Report::Outcome> outcomes;
  std::unique_ptr<Report> report;
  ~ReportOnPty() override { report.reset(); }
};

TEST_F(ReportOnPty, PrintsTheTwentyRegistersAsAnAlignedTable) {
  startOnPty();
  answer("FF059001FE", 20);
  ASSERT_EQ(outcomes.size(), 1u);
  EXPECT_TRUE(outcomes[0].succeeded);
  const QStringList rows = outcomes[0].text.split(u'\n', Qt::SkipEmptyParts);
  ASSERT_EQ(rows.size(), 20);
  EXPECT_EQ(rows[0], " 1  sid                  101");
  EXPECT_EQ(rows[9], "10  ki                   110");
  EXPECT_EQ(rows[14], "15  calibration_angle    -10");
  EXPECT_EQ(rows[15], "16  status_error         0 Items");
  EXPECT_EQ(rows[18], "19  present_temperature  119");
}

TEST_F(ReportOnPty, PrintsTheTwentyRegistersAsJson) {
  startOnPty(ReportFormat::Json);
  answer("FF059001FE", 20);
  ASSERT_EQ(outcomes.size(), 1u);
  const QJsonObject object = QJsonDocument::fromJson(outcomes[0].text.toUtf8()).object();
  EXPECT_EQ(object.value("port").toString(), "usbport-test");
  const QJsonObject registers = object.value("registers").toObject();
  EXPECT_EQ(registers.size(), 20);
  EXPECT_EQ(registers.value("sid"), QJsonValue(101));
  EXPECT_EQ(registers.value("calibration_angle"), QJsonValue(-10));
  EXPECT_EQ(registers.value("status_error"), QJsonValue("0 Items"));
}

TEST_F(ReportOnPty, WithoutAPortItSaysWhatToDo) {
  start();
  ASSERT_EQ(outcomes.size(), 1u);
  EXPECT_FALSE(outcomes[0].succeeded);
  EXPECT_TRUE(onlyText().startsWith("there is no serial port"));
  EXPECT_EQ(timers.running(), 0u);
}

TEST_F(ReportOnPty, APortThatCannotBeOpenedIsExplained) {
  bench.terminal.fail(Call::Lock, EWOULDBLOCK);
  startOnPty();
  ASSERT_EQ(outcomes.size(), 1u);
  EXPECT_FALSE(outcomes[0].succeeded);
  EXPECT_TRUE(onlyText().contains("in use by another program")) << onlyText().toStdString();
  EXPECT_EQ(timers.running(), 0u);
}

TEST_F(ReportOnPty, NoServoAndSeveralServosAreToldApart) {
  startOnPty();
  answer("FF059000FE", 0);
  EXPECT_TRUE(onlyText().startsWith("no servo answered")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, SeveralServosAreAnError) {
  startOnPty();
  answer("FF059002FE", 0);
  EXPECT_TRUE(onlyText().startsWith("more than one servo")) << onlyText().toStdString();
  EXPECT_FALSE(outcomes[0].succeeded);
}

TEST_F(ReportOnPty, ASilentDeviceIsGivenUpAfterThirtySeconds) {
  startOnPty();
  timers.advance(29s);
  EXPECT_TRUE(outcomes.empty());
  timers.advance(1s);
  EXPECT_TRUE(onlyText().startsWith("no answer from usbport-test within 30 s")) << onlyText().toStdString();
  timers.advance(60s);
  EXPECT_EQ(outcomes.size(), 1u);
  EXPECT_EQ(timers.running(), 0u);
}

TEST_F(ReportOnPty, AServoThatAnswersLateIsStillRead) {
  startOnPty();
  timers.advance(29s);
  answer("FF059001FE", 20);
  EXPECT_TRUE(outcomes.size() == 1 && outcomes[0].succeeded);
}

TEST_F(ReportOnPty, AServoThatFallsSilentIsGivenUpThirtySecondsLater) {
  startOnPty();
  timers.advance(20s);
  answer("FF059001FE", 7);
  timers.advance(29s);
  EXPECT_TRUE(outcomes.empty());
  timers.advance(2s);
  EXPECT_TRUE(onlyText().contains("stopped answering after 7 of 20 registers")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, RegistersWithoutAnAnsweredDetectionAreNoSuccess) {
  startOnPty();
  answer("FF059001", 20);
  EXPECT_TRUE(outcomes.empty());
  EXPECT_EQ(pty.read(50).first(4), QByteArray::fromHex("FF0490FE")) << "it is asked once more";
  timers.advance(29s);
  EXPECT_TRUE(outcomes.empty());
  timers.advance(2s);
  EXPECT_EQ(onlyText(),
            "usbport-test answered, but did not tell whether exactly one servo is there: check the servo's "
            "cable and "
            "power, then retry.");
  EXPECT_FALSE(outcomes[0].succeeded);
  EXPECT_EQ(pty.readPending(), "") << "once only";
}

TEST_F(ReportOnPty, ADetectionThatIsAnsweredAtTheSecondAttemptIsMadeGood) {
  startOnPty();
  answer("FF059001", 20);
  ASSERT_EQ(pty.read(50).first(4), QByteArray::fromHex("FF0490FE"));
  pty.write(QByteArray::fromHex("FF059001FE"));
  ASSERT_TRUE(bench.mainQueue.runNext());
  timers.advance(10ms);
  EXPECT_TRUE(outcomes.size() == 1 && outcomes[0].succeeded) << onlyText().toStdString();
}

TEST_F(ReportOnPty, SeveralServosAtTheSecondAttemptAreAnError) {
  startOnPty();
  answer("FF059001", 20);
  ASSERT_EQ(pty.read(50).first(4), QByteArray::fromHex("FF0490FE"));
  pty.write(QByteArray::fromHex("FF059002FE"));
  ASSERT_TRUE(bench.mainQueue.runNext());
  timers.advance(10ms);
  EXPECT_TRUE(onlyText().startsWith("more than one servo")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, AReplyOneByteShortIsNotPrinted) {
  startOnPty();
  answer("FF059001FE", 7);
  ASSERT_EQ(pty.read(50).first(5), QByteArray::fromHex("FF059108FE"));
  pty.write(QByteArray::fromHex("FF06910801FE"));
  ASSERT_TRUE(bench.mainQueue.runNext());
  timers.advance(30s);
  EXPECT_TRUE(onlyText().contains("stopped answering after 7 of 20 registers")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, AnUnpluggedPortEndsTheReport) {
  startOnPty();
  answer("FF059001FE", 3);
  pty.unplug();
  ASSERT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    timers.advance(10ms);
    return !outcomes.empty();
  }));
  EXPECT_TRUE(onlyText().contains("was removed while it was being read")) << onlyText().toStdString();
}

TEST_F(ReportOnPty, NoElementOfTheReportStaysRegistered) {
  start();
  report.reset();
  EXPECT_EQ(state.ObjectDictionaryArray.find(u"sID_value"), nullptr);
}

}  // namespace
}  // namespace tavril
