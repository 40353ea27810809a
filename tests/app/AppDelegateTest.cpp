#include "protocol/RegisterCatalogue.h"
#include "serial/DeliveryRule.h"
#include "store/ManagedObjectContext.h"
#include "store/PersistentStoreCoordinator.h"
#include "tests/app/LinkBench.h"
#include "tests/support/WaitFor.h"

#include <QDir>

namespace tavril {
namespace {

using namespace std::chrono_literals;

class AppDelegateLink : public LinkBench {
 protected:
  void launchOnPty() {
    bench.devices.add("usbport-test", pty.path());
    launch();
  }

  Pty pty;
};

// ------------------------------------------------------------------------------------------------ start-up

TEST_F(AppDelegateLink, LaunchingNamesTheMenusListsThePortsAndChoosesNone) {
  PlainElement titles[9];
  menu = {&titles[0], &titles[1], &titles[2], &titles[3], &titles[4],
          &titles[5], &titles[6], &titles[7], &titles[8]};
  state.ToolbarFlag = "left over";
  state.returnSTR = "left over";
  launchOnPty();
  const char *keys[] = {"[tavril]", "[about_tavril]", "[quit_tavril]",
                        "[tool]",   "[reboot_servo]", "[reset_servo]",
                        "[config]", "[port_setting]", "[detection_motor]"};
  for (int i = 0; i < 9; ++i) EXPECT_EQ(titles[i].text(), keys[i]);
  EXPECT_EQ(state.ToolbarFlag, "");
  EXPECT_EQ(state.returnSTR, "");
  EXPECT_FALSE(state.returnSTR.isNull());
  EXPECT_NE(state.FunctionCMD, nullptr);
  EXPECT_EQ(portNames(), QStringList{"usbport-test"});
  EXPECT_EQ(state.SelectSerial, nullptr);
  EXPECT_EQ(application->serialPort(), nullptr);
  EXPECT_EQ(bench.terminal.count(Call::Open), 0) << "no port is opened before the user asks for it";
}

TEST_F(AppDelegateLink, ThePlaceholderPortFailsItsAssertionInTheLogAtEveryLaunch) {
  launch();
  EXPECT_EQ(bench.log.lines().last(),
            "*** Assertion failure: SerialPort must be init'd using -initWithPath:");
}

// --------------------------------------------------------------------------------- the object store,
// quitting

TEST_F(AppDelegateLink, LaunchingAndQuittingMakeNoObjectStore) {
  launchOnPty();
  EXPECT_EQ(application->applicationShouldTerminate(), TerminateReply::TerminateNow);
  application->applicationWillTerminate();
  EXPECT_TRUE(QDir(applicationSupport.path()).isEmpty());
}

TEST_F(AppDelegateLink, TheObjectStoreIsReachedThroughTheDelegate) {
  launch();
  EXPECT_EQ(application->applicationDocumentsDirectory(),
            applicationSupport.path() + QStringLiteral("/org.tavril.Tavril"));
  EXPECT_EQ(application->managedObjectModel(), store.managedObjectModel());
  EXPECT_FALSE(QDir(application->applicationDocumentsDirectory()).exists());
  ManagedObjectContext *context = application->managedObjectContext();
  ASSERT_NE(context, nullptr);
  EXPECT_EQ(context, store.managedObjectContext());
  EXPECT_EQ(application->persistentStoreCoordinator(), store.persistentStoreCoordinator());
  EXPECT_EQ(application->windowWillReturnUndoManager(), &context->undoManager());
  EXPECT_TRUE(QDir(application->applicationDocumentsDirectory()).exists());
}

TEST_F(AppDelegateLink, EditsThatCannotBeCommittedAreLoggedWhenSavingAndKeepTheProgramFromQuitting) {
  class : public ManagedObjectContext::Editor {
    bool commitEditing() override { return false; }
  } editor;
  launch();
  application->managedObjectContext()->objectDidBeginEditing(editor);
  application->saveAction();
  EXPECT_EQ(bench.log.lines().last(), "AppDelegate:saveAction: unable to commit editing before saving");
  EXPECT_EQ(application->applicationShouldTerminate(), TerminateReply::TerminateCancel);
  EXPECT_EQ(bench.log.lines().last(),
            "AppDelegate:applicationShouldTerminate: unable to commit editing to terminate");
}

// ------------------------------------------------------------------------------------------------ the link

TEST_F(AppDelegateLink, ConnectingOpensPort0At115200AndSendsTheDetectionAfterFiveSeconds) {
  launchOnPty();
  application->serialFormat();
  EXPECT_EQ(wait.waits, std::vector{50ms});
  EXPECT_TRUE(application->serialPort()->isOpen());
  EXPECT_EQ(application->serialPort()->baudRate(), 115200u);
  EXPECT_EQ(application->serialPort()->delegate(), application);
  EXPECT_EQ(textOf("ConnectStatus"), "");
  QString shownDuringTheWait;
  wait.during = [&] { shownDuringTheWait = textOf("ConnectStatus"); };
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return wait.waits.size() == 2; }));
  EXPECT_EQ(wait.waits.back(), 5000ms);
  EXPECT_EQ(shownDuringTheWait, "[Serial_port_start_initialization]");
  EXPECT_EQ(pty.read(50), QByteArray::fromHex("FF0490FE") + QByteArray(46, '\0'));
}

TEST_F(AppDelegateLink, ConnectingAgainClosesThePortFirstAndOpensItAnew) {
  launchOnPty();
  connect(pty);
  elements.at("ConnectStatus").setText("old");
  application->serialFormat();
  EXPECT_EQ(textOf("ConnectStatus"), "[Not_connect]");
  EXPECT_TRUE(application->serialPort()->isOpen());
  EXPECT_EQ(application->serialPort()->delegate(), application);
  EXPECT_EQ(bench.terminal.count(Call::Open), 2);
}

TEST_F(AppDelegateLink, ConnectingWhileAnotherPortIsOpenClosesThatOneAndOpensTheFirstOfTheList) {
  launchOnPty();
  connect(pty);
  const auto earlier = application->serialPort();
  const Pty otherPty;
  const auto other = bench.port("usbport-other", otherPty.path());
  state.allSerialPortsInfo = {other, earlier};
  elements.at("ConnectStatus").setText("old");
  application->serialFormat();
  EXPECT_FALSE(earlier->isOpen());
  EXPECT_EQ(earlier->delegate(), nullptr);
  EXPECT_EQ(textOf("ConnectStatus"), "[Not_connect]")
      << "the closing was told before the delegate was cleared";
  EXPECT_EQ(application->serialPort(), other);
  EXPECT_EQ(other->delegate(), application);
  EXPECT_TRUE(other->isOpen());
  EXPECT_EQ(other->baudRate(), 115200u);
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return wait.waits.size() == 4; }));
  EXPECT_EQ(otherPty.read(4), QByteArray::fromHex("FF0490FE"));
}

TEST_F(AppDelegateLink, ConnectingWithoutAPortDoesNothing) {
  launch();
  application->serialFormat();
  EXPECT_EQ(application->serialPort(), nullptr);
  EXPECT_TRUE(wait.waits.empty());
}

TEST_F(AppDelegateLink, APortThatIsOpenAlreadyIsTakenAsItIs) {
  launchOnPty();
  state.allSerialPortsInfo[0]->open();
  application->serialFormat();
  EXPECT_EQ(application->serialPort(), state.allSerialPortsInfo[0]);
  EXPECT_TRUE(wait.waits.empty());
  EXPECT_EQ(bench.terminal.count(Call::Open), 1);
}

TEST_F(AppDelegateLink, APortThatCannotBeOpenedIsLoggedAndWaitedForAllTheSame) {
  launchOnPty();
  bench.terminal.fail(Call::Open, EACCES);
  application->serialFormat();
  EXPECT_EQ(wait.waits, std::vector{50ms});
  ASSERT_TRUE(application->lastSerialError().has_value());
  EXPECT_EQ(application->lastSerialError()->code, EACCES);
  EXPECT_EQ(bench.log.warnings().filter("Serial port usbport-test encountered an error: ").size(), 1);
  bench.terminal.heal(Call::Open);
  application->serialFormat();
  EXPECT_FALSE(application->lastSerialError().has_value());
}

TEST_F(AppDelegateLink, ChangingThePortMovesTheDelegate) {
  launchOnPty();
  const auto first = state.allSerialPortsInfo[0];
  const auto second = bench.port("ttyS1", "/dev/ttyS1");
  application->setSerialPort(first);
  EXPECT_EQ(first->delegate(), application);
  application->setSerialPort(second);
  EXPECT_EQ(first->delegate(), nullptr);
  EXPECT_EQ(second->delegate(), application);
  application->setSerialPort(nullptr);
  EXPECT_EQ(second->delegate(), nullptr);
}

// ------------------------------------------------------------------------------------------------- sending

TEST_F(AppDelegateLink, SendingShowsTheFrameClearsTheBufferAndSendsAll50Bytes) {
  launchOnPty();
  connect(pty);
  bench.log.clear();
  state.FunctionCMD->Init_Servo();
  EXPECT_EQ(textOf("TXcmd"), "TX: ff 4 90 fe");
  EXPECT_EQ(state.SerialCMD, wire::CommandBuffer{});
  EXPECT_EQ(bench.log.lines(), (QStringList{"ff", "4", "90", "fe"}));
  EXPECT_EQ(pty.read(50), QByteArray::fromHex("FF0490FE") + QByteArray(46, '\0'));
  EXPECT_EQ(pty.readPending(), QByteArray());
}

TEST_F(AppDelegateLink, TheTraceIsLabelledByWhateverByte3MapsTo) {
  launch();
  state.FunctionCMD->ReadServoSettingValue(8);
  EXPECT_EQ(textOf("TXcmd"), "MaxLoad_valueTX: ff 5 91 8 fe");
  state.FunctionCMD->WriteServoSettingValue(15, -10);
  EXPECT_EQ(textOf("TXcmd"), "CalibrationAngleTX: ff 7 92 f ff f6 fe");
  state.FunctionCMD->SetServoPosition(0x0300);
  EXPECT_EQ(textOf("TXcmd"), "AlarmLED_valueTX: ff 6 96 3 0 fe");
  state.FunctionCMD->ReadServoSettingValue(16);
  EXPECT_EQ(textOf("TXcmd"), "TX: ff 5 91 10 fe");
}

TEST_F(AppDelegateLink, SendingWithoutAPortTracesAndClears) {
  launch();
  state.FunctionCMD->Reboot_Servo();
  EXPECT_EQ(textOf("TXcmd"), "TX: ff 4 94 fe");
  EXPECT_EQ(state.SerialCMD, wire::CommandBuffer{});
}

TEST_F(AppDelegateLink, CmdlabelOf15IsTheHelpKeyAndThatOf0And16And21IsEmpty) {
  launch();
  EXPECT_EQ(application->cmdlabel(1), "sID_value");
  EXPECT_EQ(application->cmdlabel(14), "OverLoad_value");
  EXPECT_EQ(application->cmdlabel(15), "CalibrationAngle");
  for (const int number : {0, 16, 21, -1, 254}) EXPECT_EQ(application->cmdlabel(number), "") << number;
  EXPECT_EQ(state.ObjectDictionaryArray.find(application->cmdlabel(15)), nullptr);
}

// ----------------------------------------------------------------------------------------------- receiving

TEST_F(AppDelegateLink, AWholeFrameIsTracedAndDecoded) {
  launch();
  deliver("FF059001FE");
  EXPECT_EQ(textOf("RXcmd"), "RX: 255 5 144 1 254 ff 05 90 01 fe");
  EXPECT_EQ(state.CanUseTavril, "true");
  EXPECT_EQ(textOf("TXcmd"), "sID_valueTX: ff 5 91 1 fe");
}

TEST_F(AppDelegateLink, AReplyOneByteShortIsShownWithItsEndMarkAsTheLastByte) {
  launch();
  deliver("FF06910801FE");
  EXPECT_EQ(textOf("MaxLoad_value"), "510");
  EXPECT_EQ(textOf("TXcmd"), "Kp_valueTX: ff 5 91 9 fe");
}

TEST_F(AppDelegateLink, WhatCameSinceTheLastDetectionIsRememberedForTheDoctor) {
  launch();
  deliver("01020304");
  deliver("FF069703FFFE");
  EXPECT_EQ(application->received(), QByteArray::fromHex("01020304FF069703FFFE"));
  deliver("FF059001FE");
  EXPECT_EQ(application->received(), QByteArray::fromHex("FF059001FE"));
  for (int i = 0; i < 2; ++i) deliver(QByteArray("01").repeated(3000).constData());
  EXPECT_EQ(application->received().size(), 4096);
  EXPECT_TRUE(application->received().startsWith(QByteArray::fromHex("FF059001FE")));
}

TEST_F(AppDelegateLink, ThePortThatIsOpenOrWouldBeOpenedIsNamed) {
  launch();
  EXPECT_EQ(application->openPath(), QString());
  EXPECT_EQ(application->pathToOpen(), QString());
}

TEST_F(AppDelegateLink, AnOpenPortIsNamedAndNothingOfItsLastOpeningIsRemembered) {
  launchOnPty();
  EXPECT_EQ(application->openPath(), QString());
  EXPECT_EQ(application->pathToOpen(), pty.path());
  deliver("01");
  connect(pty);
  EXPECT_EQ(application->openPath(), pty.path());
  EXPECT_EQ(application->received(), QByteArray());
}

TEST_F(AppDelegateLink, TheDecodersTextIsKept) {
  launch();
  deliver("FF069703FFFE");
  EXPECT_EQ(state.returnSTR, "1023");
  deliver("FF0496FE");
  EXPECT_EQ(state.returnSTR, "");
}

TEST_F(AppDelegateLink, APartialDeliveryRestartsTheReadingAndIsNotDecoded) {
  launch();
  deliver("FF07910801");
  EXPECT_EQ(textOf("TXcmd"), "sID_valueTX: ff 5 91 1 fe");
  EXPECT_EQ(textOf("RXcmd"), "");
  const QStringList lines = bench.log.lines();
  EXPECT_EQ(lines.count("ContentArray=(255, 7, 145, 8, 1)"), 5);
  for (int i = 0; i < 5; ++i) EXPECT_EQ(lines.count(QStringLiteral("out %1").arg(i)), 1) << i;
}

TEST_F(AppDelegateLink, ADeliveryThatDoesNotStartWith255IsDropped) {
  launch();
  bench.log.clear();
  deliver("010203");
  deliver("2CFE");
  deliver("FE");
  deliver("00");
  deliver("");
  EXPECT_EQ(textOf("TXcmd"), "");
  EXPECT_EQ(textOf("RXcmd"), "");
  EXPECT_EQ(bench.log.lines(), QStringList());
}

TEST_F(AppDelegateLink, TwoRepliesInOneDeliveryFailTheLengthTestAndRestartTheReading) {
  launch();
  deliver("FF0791010001FEFF0791020002FE");
  EXPECT_EQ(textOf("sID_value"), "");
  EXPECT_EQ(textOf("TXcmd"), "sID_valueTX: ff 5 91 1 fe");
}

TEST_F(AppDelegateLink, ALoneStartMarkRestartsTheReading) {
  launch();
  deliver("FF");
  EXPECT_EQ(textOf("TXcmd"), "sID_valueTX: ff 5 91 1 fe");
}

TEST_F(AppDelegateLink, AFrameWithAWrongLengthOrEndRestartsTheReading) {
  launch();
  for (const char *frame : {"FF069001FE", "FF0590010E", "FF049001FE"}) {
    elements.at("TXcmd").setText(QString());
    deliver(frame);
    EXPECT_EQ(textOf("TXcmd"), "sID_valueTX: ff 5 91 1 fe") << frame;
    EXPECT_EQ(textOf("RXcmd"), "");
  }
  EXPECT_EQ(state.CanUseTavril, "");
}

TEST_F(AppDelegateLink, AfterGivingUpNoDeliveryIsDecodedOrTraced) {
  launch();
  state.CancelConnectFlag = "disconnect";
  deliver("FF059001FE");
  deliver("FF07910801");
  EXPECT_EQ(textOf("RXcmd"), "");
  EXPECT_EQ(textOf("TXcmd"), "");
  EXPECT_EQ(state.CanUseTavril, "");
}

TEST_F(AppDelegateLink, ASingleZeroByteClearsNothing) {
  launch();
  elements.at("sID_value").setText("42");
  elements.at("ConnectStatus").setText("connected");
  deliver("00");
  EXPECT_EQ(textOf("sID_value"), "42");
  EXPECT_EQ(textOf("ConnectStatus"), "connected");
}

TEST_F(AppDelegateLink, RepliesFromTheWireAreDecoded) {
  launchOnPty();
  connect(pty);
  pty.write(QByteArray::fromHex("FF059001FE"));
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return state.CanUseTavril == u"true"; }));
  EXPECT_EQ(pty.read(50).first(5), QByteArray::fromHex("FF059101FE"));
  pty.write(QByteArray::fromHex("FF079101002AFE"));
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return textOf("sID_value") == u"42"; }));
  EXPECT_EQ(pty.read(50).first(5), QByteArray::fromHex("FF059102FE"));
}

TEST_F(AppDelegateLink, ThePortIsOpenedWithTheRuleForRepliesAndLowLatency) {
  bench.terminal.setLowLatencyOfLine(false);
  launchOnPty();
  connect(pty);
  const auto port = application->serialPort();
  ASSERT_NE(port->deliveryRule(), nullptr);
  EXPECT_EQ(port->deliveryRule()->longestWait, 20ms);
  EXPECT_EQ(bench.terminal.lowLatencyOfLine(), true);
  port->close();
  EXPECT_EQ(bench.terminal.lowLatencyOfLine(), false);
}

TEST_F(AppDelegateLink, ARepliesPiecesFromTheWireAreDecodedAsOneAndGluedRepliesAsTwo) {
  launchOnPty();
  connect(pty);
  // Written in two, and one reply hangs on to the other; whether they are read together does not matter.
  pty.write(QByteArray::fromHex("FF059001"));
  pty.write(QByteArray::fromHex("FEFF079101002AFE"));
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return textOf("sID_value") == "42"; }));
  EXPECT_EQ(textOf("RXcmd").left(3), "RX:");
}

// ------------------------------------------------------------------------------------- closing and removal

TEST_F(AppDelegateLink, AClosedPortShowsAsNotConnected) {
  launchOnPty();
  connect(pty);
  application->serialPort()->close();
  EXPECT_EQ(textOf("ConnectStatus"), "[Not_connect]");
}

TEST_F(AppDelegateLink, APulledPlugIsToldOnceAndLeavesNoPort) {
  launchOnPty();
  connect(pty);
  const auto port = application->serialPort();
  QString shownBehindTheAlert;
  bool portBehindTheAlert = true;
  alert.whileUp = [&] {
    shownBehindTheAlert = textOf("ConnectStatus");
    portBehindTheAlert = application->serialPort() != nullptr;
  };
  pty.unplug();
  ASSERT_TRUE(bench.mainQueue.runUntil([&] { return !alert.contents.empty(); }));
  ASSERT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    return !port->isOpen();
  }));
  ASSERT_EQ(alert.contents.size(), 1u);
  EXPECT_EQ(alert.contents[0].messageText, "Serial Notice");
  EXPECT_EQ(alert.contents[0].informativeText, "Serial Port Was Removed From PC.");
  EXPECT_EQ(alert.contents[0].buttons, QStringList{"OK"});
  EXPECT_EQ(shownBehindTheAlert, "[Not_connect]");
  EXPECT_FALSE(portBehindTheAlert);
  EXPECT_EQ(port->delegate(), nullptr);
}

TEST_F(AppDelegateLink, TheUdevWordOfARemovalThatThePollerHasToldRaisesNoSecondAlert) {
  launchOnPty();
  connect(pty);
  const auto port = application->serialPort();
  pty.unplug();
  ASSERT_TRUE(waitFor([&] {
    bench.mainQueue.runAll();
    return !port->isOpen();
  }));
  bench.devices.pullOut(pty.path());
  bench.mainQueue.runAll();
  EXPECT_EQ(alert.contents.size(), 1u);
}

// --------------------------------------------------------------------------------- ports that come and go

TEST_F(AppDelegateLink, APortThatIsPluggedInIsTakenUpWhenTheUserConfirms) {
  launch();
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.mainQueue.runAll();
  ASSERT_EQ(alert.contents.size(), 1u);
  EXPECT_EQ(alert.contents[0].messageText, "Serial Notice");
  EXPECT_EQ(alert.contents[0].informativeText, "Serial Port Was Connected From PC.");
  EXPECT_EQ(alert.contents[0].buttons, QStringList{"OK"});
  EXPECT_EQ(portNames(), QStringList{"usbserial-ttyUSB0"}) << "listed once";
  const QStringList lines = bench.log.lines();
  EXPECT_TRUE(lines.contains("Ports were connected: (usbserial-ttyUSB0)"));
  EXPECT_EQ(lines.count("Find Serial port usbserial-ttyUSB0"), 2);
}

TEST_F(AppDelegateLink, AConfirmedPortIsAppendedUnlessAnEqualOneIsThere) {
  launch();
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  alert.whileUp = [&] { state.allSerialPortsInfo.clear(); };
  bench.mainQueue.runAll();
  EXPECT_EQ(portNames(), QStringList{"usbserial-ttyUSB0"});
}

TEST_F(AppDelegateLink, AnAlertThatIsNotConfirmedAppendsNothing) {
  launch();
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  alert.answers = {ModalAlert::secondButton};
  alert.whileUp = [&] { state.allSerialPortsInfo.clear(); };
  bench.mainQueue.runAll();
  EXPECT_TRUE(portNames().isEmpty());
}

TEST_F(AppDelegateLink, APortWhoseNameDoesNotBeginWithUsbRaisesNoAlert) {
  launch();
  bench.devices.plugIn("ttyS4", "/dev/ttyS4");
  bench.mainQueue.runAll();
  EXPECT_TRUE(alert.contents.empty());
  ASSERT_EQ(userNotifications.delivered.size(), 1u);
}

TEST_F(AppDelegateLink, OnlyTheFirstOfSeveralConnectedPortsDecidesOnTheAlert) {
  launch();
  bench.devices.plugIn("ttyS4", "/dev/ttyS4");
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_TRUE(alert.contents.empty()) << "the first is no USB port";
  EXPECT_EQ(userNotifications.delivered.size(), 2u);

  state.allSerialPortsInfo.clear();
  bench.devices.plugIn("usbserial-ttyUSB1", "/dev/ttyUSB1");
  bench.devices.plugIn("ttyS5", "/dev/ttyS5");
  bench.devices.plugIn("usbserial-ttyUSB2", "/dev/ttyUSB2");
  alert.whileUp = [&] { state.allSerialPortsInfo.clear(); };
  bench.mainQueue.runAll();
  EXPECT_EQ(alert.contents.size(), 1u) << "one alert for all of them";
  EXPECT_EQ(portNames(), QStringList{"usbserial-ttyUSB1"}) << "and only the first is taken up";
}

TEST_F(AppDelegateLink, AnEmptyListOfConnectedPortsRaisesNothing) {
  launchOnPty();
  bench.devices.plugIn("usbport-test", pty.path());
  bench.mainQueue.runAll();
  EXPECT_TRUE(alert.contents.empty());
  EXPECT_TRUE(userNotifications.delivered.empty());
}

TEST_F(AppDelegateLink, ComingAndGoingIsNotifiedSilentlyAndWithdrawnAfterThreeSeconds) {
  strings.texts["Serial Port %@ was connected to your Mac."] = "Port %@ came.";
  strings.texts["Serial Port %@ was disconnected from your Mac."] = "Port %@ went.";
  launch();
  bench.devices.plugIn("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.mainQueue.runAll();
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.mainQueue.runAll();
  ASSERT_EQ(userNotifications.delivered.size(), 2u);
  EXPECT_EQ(userNotifications.delivered[0].title, "[Serial Port Connected]");
  EXPECT_EQ(userNotifications.delivered[0].informativeText, "Port usbserial-ttyUSB0 came.");
  EXPECT_FALSE(userNotifications.delivered[0].soundName.has_value());
  EXPECT_EQ(userNotifications.delivered[1].title, "[Serial Port Disconnected]");
  EXPECT_EQ(userNotifications.delivered[1].informativeText, "Port usbserial-ttyUSB0 went.");
  EXPECT_EQ(userNotifications.presented.size(), 2u) << "shown although the application is in front";
  timers.advance(2999ms);
  EXPECT_TRUE(userNotifications.removed.empty());
  timers.advance(1ms);
  EXPECT_EQ(userNotifications.removed, (std::vector<quint32>{1, 2}));
}

TEST_F(AppDelegateLink, ADisconnectedPortIsForgottenOnlyAtItsOwnPlaceInTheList) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.devices.add("usbserial-ttyUSB1", "/dev/ttyUSB1");
  launch();
  elements.at("sID_value").setText("42");
  bench.devices.pullOut("/dev/ttyUSB1");  // first of the disconnected, but not the first of the list
  bench.mainQueue.runAll();
  EXPECT_EQ(portNames(), (QStringList{"usbserial-ttyUSB0", "usbserial-ttyUSB1"}));
  EXPECT_EQ(textOf("sID_value"), "42");
  EXPECT_TRUE(elements.at("sID_value").isEnabled());

  elements.at("PresentLoad_value").setText("9");
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_EQ(portNames(), QStringList{"usbserial-ttyUSB1"});
  for (const RegisterRow &row : settingRegisters()) {
    EXPECT_EQ(elements.at(row.valueKey.toString()).text(), "") << row.number;
    EXPECT_FALSE(elements.at(row.valueKey.toString()).isEnabled()) << row.number;
  }
  EXPECT_EQ(textOf("PresentLoad_value"), "9") << "only the settings are cleared";
  EXPECT_TRUE(bench.log.lines().contains("Ports were disconnected: (usbserial-ttyUSB0)"));
}

TEST_F(AppDelegateLink, SeveralDisconnectedPortsAreComparedPlaceByPlaceWhileTheListShrinks) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  bench.devices.add("usbserial-ttyUSB1", "/dev/ttyUSB1");
  bench.devices.add("usbserial-ttyUSB2", "/dev/ttyUSB2");
  launch();
  // ttyUSB0 stands at place 0 and goes; then place 1 holds ttyUSB2, which is not the second that went.
  for (const char *path : {"/dev/ttyUSB0", "/dev/ttyUSB1"}) bench.devices.pullOut(path);
  bench.mainQueue.runAll();
  EXPECT_EQ(portNames(), (QStringList{"usbserial-ttyUSB1", "usbserial-ttyUSB2"}));
}

TEST_F(AppDelegateLink, APlatformWithoutUserNotificationsDoesNothingAboutThem) {
  bench.devices.add("usbserial-ttyUSB0", "/dev/ttyUSB0");
  desktop.userNotifications = nullptr;
  launch();
  bench.devices.pullOut("/dev/ttyUSB0");
  bench.mainQueue.runAll();
  EXPECT_EQ(portNames(), QStringList{"usbserial-ttyUSB0"});
}

// ------------------------------------------------------------------------------------------- menu and exit

TEST_F(AppDelegateLink, MenuActionsAskTheScreenOnlyWhenNothingIsPending) {
  launch();
  application->RebootServo();
  EXPECT_EQ(state.ToolbarFlag, "RebootServo");
  application->ResetServo();
  EXPECT_EQ(state.ToolbarFlag, "RebootServo");
  state.ToolbarFlag.clear();
  application->ResetServo();
  EXPECT_EQ(state.ToolbarFlag, "ResetServo");
  state.ToolbarFlag.clear();
  application->DetectionMotro();
  EXPECT_EQ(state.ToolbarFlag, "DetectionMotro");
}

TEST_F(AppDelegateLink, RebootServoWhileAnUpdateIsPendingChangesNothing) {
  launch();
  state.ToolbarFlag = "UpdateMotorValue";
  application->RebootServo();
  EXPECT_EQ(state.ToolbarFlag, "UpdateMotorValue");
}

TEST_F(AppDelegateLink, TheExitHandlersCloseThePortRestoreItsLineAndRaiseNoAlert) {
  const termios before = pty.attributes();
  launchOnPty();
  connect(pty);
  const auto port = application->serialPort();
  bench.processExit.runAll();
  EXPECT_FALSE(port->isOpen());
  EXPECT_TRUE(alert.contents.empty());
  EXPECT_EQ(pty.attributes().c_cflag, before.c_cflag);
}

}  // namespace
}  // namespace tavril
