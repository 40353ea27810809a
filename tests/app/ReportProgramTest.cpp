#include "simulator/VirtualServo.h"
#include "tests/support/Ownership.h"
#include "tests/support/Program.h"
#include "tests/support/ScriptedBridge.h"

#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavril {
namespace {

const std::string factoryTable =
    " 1  sid                  1\n"
    " 2  ack_policy           2\n"
    " 3  alarm_led_policy     0\n"
    " 4  torque_policy        1\n"
    " 5  max_tempertaure      80\n"
    " 6  min_voltage          60\n"
    " 7  max_voltage          84\n"
    " 8  max_load             400\n"
    " 9  kp                   440\n"
    "10  ki                   10\n"
    "11  kd                   8000\n"
    "12  over_temperature     12\n"
    "13  over_voltage         20\n"
    "14  over_load            30\n"
    "15  calibration_angle    0\n"
    "16  status_error         0 Items\n"
    "17  status_detail        1 Items\n"
    "18  present_voltage      74\n"
    "19  present_temperature  27\n"
    "20  present_load         20\n";

QStringList linesOf(const QString &path) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) return {};
  return QString::fromUtf8(file.readAll()).split(u'\n', Qt::SkipEmptyParts);
}

/// A line of the servo's log without the time it begins with.
std::string withoutStamp(const QString &line) {
  return line.section(u' ', 2).toStdString();
}

/// A servo whose every setting differs from what it left the factory with, in a warm room on a full battery.
class ChangedServo : public simulator::VirtualServo {
 public:
  ChangedServo() {
    withModel([](simulator::ServoModel &model) {
      constexpr std::array<int, 15> settings{200, 0,     1,   0,  79, 59,  90, 511,
                                             441, 32766, 256, 11, 21, 255, -20};
      for (int i = 0; i < 15; ++i) {
        EXPECT_TRUE(model.write(i + 1, static_cast<std::uint16_t>(settings[static_cast<std::size_t>(i)])));
      }
      model.release();
      model.setSupplyVoltage(8.4);
      model.setRoomTemperature(41.0);
      model.setMotorTemperature(41.0);
      EXPECT_FALSE(model.setGoal(5000));
      model.noteUnknownCommand();
    });
    EXPECT_TRUE(start());
  }
};

struct Runs {
  QTemporaryDir folder;
  QString link = folder.filePath(QStringLiteral("servo"));
  QString log = folder.filePath(QStringLiteral("traffic.log"));

  ServoProgram servo{{QStringLiteral("--link"), link, QStringLiteral("--log"), log}};
  TavrilProgram ofServo{{QStringLiteral("--report"), QStringLiteral("--port"), link}};

  ChangedServo changed;
  ScriptedBridge second;
  TavrilProgram ofChanged{TavrilProgram::reportOf(changed.path()) +
                          QStringList{QStringLiteral("--port"), second.path()}};

  ScriptedBridge scripted;
  termios attributes = oddAttributes(scripted.terminal());
  TavrilProgram ofScripted{TavrilProgram::reportOf(scripted.path())};

  ScriptedBridge unprintable;
  termios unprintableAttributes = oddAttributes(unprintable.terminal());
  Program intoFullDisk{
      QStringLiteral("/bin/sh"),
      TavrilProgram::redirected(QStringLiteral(">/dev/full"), TavrilProgram::reportOf(unprintable.path()))};
};

StartedFirst<Runs> runs;

TEST(ReportProgram, ShowsTheTwentyRegistersOfTheBuiltInServoInTheirOrder) {
  TavrilProgram program({QStringLiteral("--demo"), QStringLiteral("--report")});
  expectSuccess(program.outcome(), factoryTable);
}

TEST(ReportProgram, ShowsThemAsJsonWithNumbersWhereTheValueIsOne) {
  TavrilProgram program({QStringLiteral("--demo"), QStringLiteral("--report"), QStringLiteral("--json")});
  const Program::Outcome &outcome = program.outcome();
  EXPECT_EQ(outcome.status, 0);
  EXPECT_EQ(outcome.err, "");
  const QJsonObject whole = QJsonDocument::fromJson(QByteArray::fromStdString(outcome.out)).object();
  EXPECT_EQ(whole.keys(), (QStringList{QStringLiteral("port"), QStringLiteral("registers")}));
  EXPECT_TRUE(whole[u"port"].toString().startsWith(QStringLiteral("usbport-pts-")));
  const QJsonObject registers = whole[u"registers"].toObject();
  EXPECT_EQ(registers.size(), 20);
  EXPECT_EQ(registers[u"kd"], QJsonValue(8000));
  EXPECT_EQ(registers[u"status_detail"], QJsonValue(QStringLiteral("1 Items")));
}

TEST(ReportProgram, ReadsTheServoProgramThroughItsLink) {
  expectSuccess(runs->ofServo.outcome(), factoryTable);
}

TEST(ReportProgram, DetectsOnceAndThenReadsOneRegisterAfterTheOther) {
  ASSERT_EQ(runs->ofServo.outcome().status, 0);
  runs->servo.terminate();
  ASSERT_EQ(runs->servo.outcome().status, 0);
  const QStringList lines = linesOf(runs->log);
  ASSERT_EQ(lines.size(), 42);
  EXPECT_EQ(withoutStamp(lines[0]), "-> FF 04 90 FE  detect the servo  (50 bytes)");
  EXPECT_EQ(withoutStamp(lines[1]), "<- FF 05 90 01 FE  one servo");
  for (int number = 1; number <= 20; ++number) {
    const QString byte = QStringLiteral("%1").arg(number, 2, 16, QLatin1Char('0')).toUpper();
    const std::string command = QStringLiteral("-> FF 05 91 %1 FE  read register %2  (50 bytes)")
                                    .arg(byte, QString::number(number))
                                    .toStdString();
    const QString reply = QStringLiteral("<- FF 07 91 %1 ").arg(byte);
    EXPECT_EQ(withoutStamp(lines[2 * number]), command);
    // Before the next command: never are two under way.
    EXPECT_EQ(withoutStamp(lines[2 * number + 1]).find(reply.toStdString()), 0U)
        << lines[2 * number + 1].toStdString();
  }
}

TEST(ReportProgram, ShowsWhatTheServoHoldsAndTakesTheFirstOfThePortsNamed) {
  expectSuccess(runs->ofChanged.outcome(),
                "{\n  \"port\": \"" + portName(runs->changed.path()) +
                    "\",\n  \"registers\": {\n"
                    "    \"sid\": 200,\n    \"ack_policy\": 0,\n    \"alarm_led_policy\": 1,\n"
                    "    \"torque_policy\": 0,\n    \"max_tempertaure\": 79,\n    \"min_voltage\": 59,\n"
                    "    \"max_voltage\": 90,\n    \"max_load\": 511,\n    \"kp\": 441,\n"
                    "    \"ki\": 32766,\n    \"kd\": 256,\n    \"over_temperature\": 11,\n"
                    "    \"over_voltage\": 21,\n    \"over_load\": 255,\n    \"calibration_angle\": -20,\n"
                    "    \"status_error\": \"2 Items\",\n    \"status_detail\": \"1 Items\",\n"
                    "    \"present_voltage\": 84,\n    \"present_temperature\": 41,\n"
                    "    \"present_load\": 10\n  }\n}\n");
  EXPECT_TRUE(runs->second.commands().empty());
  EXPECT_FALSE(isExclusive(runs->second.terminal()));
}

TEST(ReportProgram, GivesTheLineBackAsItFoundIt) {
  expectSuccess(runs->ofScripted.outcome(), ScriptedBridge::json(portName(runs->scripted.path())));
  EXPECT_TRUE(sameAttributes(runs->scripted.terminal().attributes(), runs->attributes));
  EXPECT_FALSE(isExclusive(runs->scripted.terminal()));
  EXPECT_TRUE(isUnlocked(runs->scripted.terminal()));
}

TEST(ReportProgram, FailsWhenTheReportCannotBeWrittenYetGivesTheLineBack) {
  expectComplaint(runs->intoFullDisk.outcome(), "the output could not be written: No space left on device.");
  EXPECT_EQ(runs->unprintable.commands().size(), 21U);
  EXPECT_TRUE(sameAttributes(runs->unprintable.terminal().attributes(), runs->unprintableAttributes));
  EXPECT_FALSE(isExclusive(runs->unprintable.terminal()));
  EXPECT_TRUE(isUnlocked(runs->unprintable.terminal()));
}

}  // namespace
}  // namespace tavril
