// Every finding of the doctor, brought about.
#include "doctor/Examination.h"
#include "doctor/MachineChecks.h"
#include "platform/Log.h"
#include "platform/StringTableFile.h"
#include "platform/linux/PosixDeviceNodes.h"
#include "platform/linux/ProcProcesses.h"
#include "platform/linux/UdevUsbBus.h"
#include "simulator/VirtualServo.h"
#include "terminal/PosixTerminalCalls.h"
#include "tests/doctor/FakeMachine.h"
#include "tests/platform/linux/MockMachine.h"
#include "tests/support/FaultyTerminalCalls.h"
#include "tests/support/Ownership.h"
#include "tests/support/Pty.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/ShippedLanguages.h"

#include <QFile>
#include <QSet>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <thread>

namespace tavril::doctor {
namespace {

using simulator::Options;
using std::chrono::milliseconds;

/// One machine with one port, on which the servo is virtual.
struct Ward {
  Ward() { EXPECT_TRUE(servo.start()); }

  void faults(const std::function<void(Options &)> &act) { servo.withOptions(act); }
  void examineServo() {
    machine.node(servo.path());
    request.path = servo.path();
  }
  std::vector<Result> examine() {
    const UsbBus &bus = mock ? static_cast<const UsbBus &>(udev) : machine.bus;
    Examination examination({bus, machine.nodes, machine.programs, terminal}, request);
    return examination.run();
  }
  MockMachine &mocked() {
    mock = std::make_unique<MockMachine>();
    return *mock;
  }

  FakeMachine machine;
  std::unique_ptr<MockMachine> mock;
  UdevUsbBus udev;
  RecordingLog log;
  PosixTerminalCalls posix{linesTo(log)};
  FaultyTerminalCalls terminal{posix};
  simulator::VirtualServo servo;
  Pty silent;
  Request request{.path = {}, .bootWait = milliseconds(0), .timeout = milliseconds(300), .retries = 2};
};

const QString usb0 = QStringLiteral("/dev/ttyUSB0");
const QString usb1 = QStringLiteral("/dev/ttyUSB1");

struct Case {
  const char *finding;
  CheckId check;
  State state;
  const char *command;
  std::function<void(Ward &)> bring;
};

std::ostream &operator<<(std::ostream &out, const Case &one) {
  return out << one.finding;
}

DeviceNode &forbidden(Ward &ward) {
  ward.machine.plug(usb0);
  DeviceNode &node = ward.machine.node(usb0);
  node.mayUse = false;
  return node;
}

const Case cases[] = {
    {"usb_none", CheckId::UsbAdapter, State::Failed, "lsusb", [](Ward &ward) { ward.mocked(); }},
    {"usb_found", CheckId::UsbAdapter, State::Passed, "",
     [](Ward &ward) {
       ward.mocked().plugFtdi(QStringLiteral("ttyUSB0"));
       ward.machine.node(usb0).mayUse = false;
     }},
    {"not_usb", CheckId::UsbAdapter, State::Skipped, "", [](Ward &ward) { ward.examineServo(); }},
    {"not_usb", CheckId::Driver, State::Skipped, "", [](Ward &ward) { ward.examineServo(); }},
    {"not_looked_at", CheckId::Servo, State::Skipped, "", [](Ward &) {}},
    {"driver_bound", CheckId::Driver, State::Passed, "",
     [](Ward &ward) {
       ward.mocked().plugAcm(QStringLiteral("ttyACM0"), QStringLiteral("1-4"));
       ward.machine.node(QStringLiteral("/dev/ttyACM0")).mayUse = false;
     }},
    {"driver_none", CheckId::Driver, State::Failed, "sudo modprobe ch341",
     [](Ward &ward) {
       ward.mocked().plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("1a86"), QString());
     }},
    {"driver_taken", CheckId::Driver, State::Failed,
     "sudo systemctl mask --now brltty-udev.service brltty.service",
     [](Ward &ward) {
       ward.mocked().plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("10c4"), QStringLiteral("usbfs"));
     }},
    {"node_missing", CheckId::Node, State::Failed, "",
     [](Ward &ward) {
       ward.mocked().plugWithoutPort(QStringLiteral("1-2"), QStringLiteral("0403"),
                                     QStringLiteral("ftdi_sio"));
     }},
    {"node_none", CheckId::Node, State::Failed, "", [](Ward &ward) { ward.request.path = usb0; }},
    {"node_moved", CheckId::Node, State::Failed, "tavrilctl doctor --port /dev/serial/by-id/usb-FTDI_ttyUSB1",
     [](Ward &ward) {
       ward.mocked().plugFtdi(QStringLiteral("ttyUSB1"));
       ward.request.path = usb0;
     }},
    {"node_lasting", CheckId::Node, State::Passed, "",
     [](Ward &ward) {
       ward.mocked().plugFtdi(QStringLiteral("ttyUSB0"));
       ward.machine.node(usb0).mayUse = false;
     }},
    {"node_several", CheckId::Node, State::Warning, "tavrilctl doctor --port /dev/ttyUSB1",
     [](Ward &ward) {
       forbidden(ward);
       ward.machine.plug(usb1);
     }},
    {"node_no_terminal", CheckId::Node, State::Failed, "tavrilctl ports",
     [](Ward &ward) {
       ward.machine.node(usb0).isCharacterDevice = false;
       ward.request.path = usb0;
     }},
    {"node_found", CheckId::Node, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"permission", CheckId::Permission, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"permission_group", CheckId::Permission, State::Passed, "",
     [](Ward &ward) {
       ward.examineServo();
       DeviceNode &node = ward.machine.node(ward.servo.path());
       node.group = QStringLiteral("dialout");
       node.inGroup = true;
     }},
    {"permission_list", CheckId::Permission, State::Passed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.machine.node(ward.servo.path()).byAccessList = true;
     }},
    {"permission_no_member", CheckId::Permission, State::Failed, "sudo usermod -aG dialout anna",
     [](Ward &ward) { forbidden(ward).group = QStringLiteral("dialout"); }},
    {"permission_later", CheckId::Permission, State::Failed, "newgrp dialout",
     [](Ward &ward) {
       DeviceNode &node = forbidden(ward);
       node.group = QStringLiteral("dialout");
       node.isMember = true;
     }},
    {"permission_denied", CheckId::Permission, State::Failed, "sudo setfacl -m u:anna:rw /dev/ttyUSB0",
     [](Ward &ward) { forbidden(ward); }},
    {"holder", CheckId::Holder, State::Failed, "kill 12 345",
     [](Ward &ward) {
       ward.examineServo();
       ward.machine.programs.held = ward.servo.path();
       ward.machine.programs.holders = {{12, QStringLiteral("minicom")}, {345, QStringLiteral("screen")}};
     }},
    {"holder_own", CheckId::Holder, State::Passed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.machine.programs.held = ward.servo.path();
       ward.machine.programs.holders = {{4711, QStringLiteral("tavril")}};
     }},
    {"holder_none", CheckId::Holder, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"holder_unseen", CheckId::Holder, State::Passed, "sudo fuser -v /dev/ttyUSB0",
     [](Ward &ward) {
       forbidden(ward);
       ward.machine.programs.all = false;
     }},
    {"daemon_none", CheckId::Daemons, State::Passed, "",
     [](Ward &ward) {
       ward.machine.programs.running = {{3, QStringLiteral("bash")}};
     }},
    {"daemon_modem", CheckId::Daemons, State::Warning, "sudo systemctl stop ModemManager.service",
     [](Ward &ward) {
       ward.machine.programs.running = {{3, QStringLiteral("ModemManager")}};
     }},
    {"daemon_braille", CheckId::Daemons, State::Warning,
     "sudo systemctl mask --now brltty-udev.service brltty.service",
     [](Ward &ward) {
       ward.machine.programs.running = {{3, QStringLiteral("ModemManager")}, {4, QStringLiteral("brltty")}};
     }},
    {"opening", CheckId::Opening, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"opening_busy", CheckId::Opening, State::Failed, "sudo fuser -v ",
     [](Ward &ward) {
       ward.examineServo();
       ward.terminal.fail(Call::Lock, EWOULDBLOCK);
     }},
    {"opening_failed", CheckId::Opening, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.terminal.fail(Call::Open, EACCES);
     }},
    {"opening_own", CheckId::Opening, State::Passed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.request.link = OwnLink{ward.servo.path(), {}};
     }},
    {"line", CheckId::LineSettings, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"line_refused", CheckId::LineSettings, State::Failed, "tavrilctl ports",
     [](Ward &ward) {
       ward.examineServo();
       ward.terminal.fail(Call::SetAttributes, EINVAL);
     }},
    {"reply", CheckId::Reply, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"reply_silent", CheckId::Reply, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.faults([](Options &options) { options.mute = true; });
       ward.request.timeout = milliseconds(20);
     }},
    {"reply_none_yet", CheckId::Reply, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.request.link = OwnLink{ward.servo.path(), {}};
     }},
    {"reply_gone", CheckId::Reply, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.faults([](Options &options) { options.unplugAfter = 1; });
     }},
    {"reply_not_taken", CheckId::Reply, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.terminal.fail(Call::Write, EAGAIN);
     }},
    {"frame", CheckId::Frame, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"frame_none", CheckId::Frame, State::Failed, "tavrilctl ports",
     [](Ward &ward) {
       ward.examineServo();
       ward.faults([](Options &options) { options.wrongLength = true; });
       ward.request.timeout = milliseconds(100);
     }},
    {"frame_unfinished", CheckId::Frame, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.request.link = OwnLink{ward.servo.path(), Heard::in(QByteArray("\xFF\x05\x90", 3))};
     }},
    {"frame_noise", CheckId::Frame, State::Warning, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.faults([](Options &options) { options.noise = true; });
     }},
    {"servo_one", CheckId::Servo, State::Passed, "", [](Ward &ward) { ward.examineServo(); }},
    {"servo_none", CheckId::Servo, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.faults([](Options &options) { options.servos = Options::Servos::None; });
     }},
    {"servo_several", CheckId::Servo, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.faults([](Options &options) { options.servos = Options::Servos::Several; });
     }},
    {"servo_error", CheckId::Servo, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.request.link = OwnLink{ward.servo.path(), Heard::in(QByteArray("\xFF\x05\xF9\x04\xFE", 5))};
     }},
    {"servo_unknown", CheckId::Servo, State::Failed, "",
     [](Ward &ward) {
       ward.examineServo();
       ward.request.link = OwnLink{ward.servo.path(), Heard::in(QByteArray("\xFF\x06\x97\x01\x02\xFE", 6))};
     }},
};

class Finding : public testing::TestWithParam<Case> {};

TEST_P(Finding, IsMadeWithItsRemedy) {
  Ward ward;
  GetParam().bring(ward);
  const std::vector<Result> results = ward.examine();
  ASSERT_EQ(results.size(), allChecks.size());
  const auto found = std::ranges::find(results, GetParam().check, &Result::check);
  EXPECT_EQ(found->finding.toStdString(), std::string("doctor_") + GetParam().finding);
  EXPECT_EQ(found->state, GetParam().state);
  const QString command = QString::fromLatin1(GetParam().command);
  EXPECT_EQ(found->command.toStdString(),
            (command.endsWith(u' ') ? command + ward.request.path : command).toStdString());
  // What has failed comes with advice.
  EXPECT_EQ(found->state == State::Failed || found->state == State::Warning, !found->advice.isEmpty());
}

std::string caseName(const testing::TestParamInfo<Case> &parameter) {
  return std::string(parameter.param.finding) + "_" + std::to_string(parameter.index);
}

INSTANTIATE_TEST_SUITE_P(All, Finding, testing::ValuesIn(cases), caseName);

/// Keys of the window itself.
const QSet<QString> windowKeys{
    QStringLiteral("doctor_again"),    QStringLiteral("doctor_copy"),    QStringLiteral("doctor_intro"),
    QStringLiteral("doctor_running"),  QStringLiteral("doctor_waiting"), QStringLiteral("doctor_passed"),
    QStringLiteral("doctor_warning"),  QStringLiteral("doctor_failed"),  QStringLiteral("doctor_skipped"),
    QStringLiteral("doctor_all_well"), QStringLiteral("doctor_trouble")};

TEST(Findings, AreAllBroughtAboutAndAllTheTextsThereAre) {
  QFile file(stringsFolder() + QStringLiteral("/en.strings"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  QSet<QString> keys;
  for (const QString &key : StringTableFile::parse(file.readAll()).entries().keys()) {
    if (key.startsWith(u"doctor_")) keys.insert(key);
  }
  QSet<QString> used = windowKeys;
  for (const CheckId check : allChecks) used.insert(titleKeyOf(check));
  for (const Case &one : cases) {
    Ward ward;
    one.bring(ward);
    for (const Result &result : ward.examine()) {
      used.insert(result.finding);
      if (!result.advice.isEmpty()) used.insert(result.advice);
    }
  }
  EXPECT_TRUE(used == keys) << (keys - used).values().join(u' ').toStdString() << " | "
                            << (used - keys).values().join(u' ').toStdString();
}

TEST(Examination, OfAHealthyMachineFindsNothing) {
  Ward ward;
  ward.machine.plug(ward.servo.path());
  const std::vector<Result> results = ward.examine();
  for (const Result &result : results) {
    EXPECT_EQ(result.state, State::Passed) << nameOf(result.check).toStdString();
  }
  EXPECT_TRUE(isHealthy(results));
}

TEST(Examination, LooksAtTheRealMachine) {
  Ward ward;
  const PosixDeviceNodes nodes;
  const ProcProcesses processes;
  ward.request.path = ward.servo.path();
  Examination examination({ward.machine.bus, nodes, processes, ward.terminal}, ward.request);
  EXPECT_TRUE(isHealthy(examination.run()));
}

TEST(Examination, TellsEachCheckBeforeAndAfterItIsMade) {
  Ward ward;
  ward.examineServo();
  Examination examination({ward.machine.bus, ward.machine.nodes, ward.machine.programs, ward.terminal},
                          ward.request);
  std::vector<CheckId> told;
  examination.run({[&](CheckId check) { told.push_back(check); },
                   [&](const Result &result) { told.push_back(result.check); }});
  std::vector<CheckId> expected;
  for (const CheckId check : allChecks) expected.insert(expected.end(), 2, check);
  EXPECT_EQ(told, expected);
}

TEST(Examination, LeavesThePortAsItWas) {
  Ward ward;
  ward.request.path = ward.silent.path();
  ward.request.timeout = milliseconds(10);
  ward.machine.node(ward.silent.path());
  const termios before = oddAttributes(ward.silent);
  ward.examine();
  EXPECT_TRUE(sameAttributes(ward.silent.attributes(), before));
  EXPECT_FALSE(isExclusive(ward.silent));
  EXPECT_TRUE(isUnlocked(ward.silent));
  // Asked three times, with the whole buffer each time.
  EXPECT_EQ(ward.silent.readPending(),
            (QByteArray("\xFF\x04\x90\xFE", 4) + QByteArray(46, '\0')).repeated(3));
}

TEST(Examination, NeverOpensAPortThatItMayNotOrSomebodyHolds) {
  for (const char *finding : {"permission_denied", "holder", "opening_own", "node_none"}) {
    Ward ward;
    std::ranges::find_if(cases, [&](const Case &one) {
      return std::string_view(one.finding) == finding;
    })->bring(ward);
    ward.examine();
    EXPECT_EQ(ward.terminal.count(Call::Open), 0) << finding;
  }
}

TEST(Examination, OfOnesOwnLinkGoesByWhatCameOverIt) {
  Ward ward;
  ward.examineServo();
  ward.request.link = OwnLink{ward.servo.path(), Heard::in(QByteArray("\xFF\x05\x90\x01\xFE", 5))};
  const std::vector<Result> results = ward.examine();
  EXPECT_TRUE(isHealthy(results));
  EXPECT_EQ(results.back().finding, QStringLiteral("doctor_servo_one"));
  EXPECT_EQ(ward.servo.framesSeen(), 0);
}

TEST(Examination, GivesTheBridgeTimeToStart) {
  Ward ward;
  ward.servo.stop();
  ward.faults([](Options &options) { options.startUp = milliseconds(400); });
  ASSERT_TRUE(ward.servo.start());
  ward.examineServo();
  ward.request.bootWait = milliseconds(500);
  ward.request.retries = 0;
  EXPECT_TRUE(isHealthy(ward.examine()));
}

TEST(Examination, EndsSoonWhenItIsCancelledDuringTheWait) {
  Ward ward;
  ward.examineServo();
  ward.request.bootWait = std::chrono::minutes(10);
  Examination examination({ward.machine.bus, ward.machine.nodes, ward.machine.programs, ward.terminal},
                          ward.request);
  std::thread canceller;
  const auto results = examination.run({[&](CheckId check) {
                                          if (check == CheckId::Reply)
                                            canceller = std::thread([&] { examination.cancel(); });
                                        },
                                        nullptr});
  canceller.join();
  ASSERT_FALSE(results.empty());
  EXPECT_EQ(results.back().check, CheckId::LineSettings);
}

TEST(Examination, CountsADriverThatSaysYesAndDoesOtherwiseAsRefusing) {
  Ward ward;
  ward.request.path = ward.silent.path();
  ward.machine.node(ward.silent.path());
  oddAttributes(ward.silent);
  ward.terminal.answer(Call::SetAttributes, 0);
  const auto results = ward.examine();
  EXPECT_EQ(std::ranges::find(results, CheckId::LineSettings, &Result::check)->state, State::Failed);
}

}  // namespace
}  // namespace tavril::doctor
