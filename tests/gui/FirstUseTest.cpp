#include "editor/dial/KnobView.h"
#include "editor/screen/ButtonLabel.h"
#include "serial/config/PortDelegate.h"
#include "tests/gui/GuiBench.h"

#include <QAbstractItemView>
#include <QComboBox>
#include <QImage>
#include <QLabel>
#include <QTextDocumentFragment>
#include <QtMath>

#include <set>

namespace tavril {
namespace {

using namespace std::chrono_literals;

/// One user's whole first use, in one window, with pointer and keys.
TEST_F(GuiBench, AFirstUse) {
  // Nothing can be edited before a servo was found, and menu actions are refused.
  EXPECT_FALSE(find<QWidget>("sID_value")->isEnabled());
  EXPECT_FALSE(find<QWidget>("read")->isEnabled());
  EXPECT_EQ(textOf("ConnectStatus"), strings.text(u"Not_connect"));
  shortcut(Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_TRUE(waitFor([this] { return alert.contents.size() == 1; }));
  EXPECT_EQ(alert.contents[0].informativeText, strings.text(u"Not_connect"));
  EXPECT_FALSE(find<QWidget>("ContrainerView_MsgView")->isVisible());

  // The port dialog lists the port, and confirming it shows the wait panel while the bridge starts.
  shortcut(Qt::Key_P, Qt::ControlModifier);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(dialog->findChild<QComboBox *>()->currentText(), portName);
  EXPECT_EQ(dialog->findChild<QComboBox *>()->property("identifier").toString(), QStringLiteral("port"));
  bool waitPanelUp = false;
  wait.during = [&] { waitPanelUp = waitPanelUp || find<QWidget>("ContrainerView_WaitView")->isVisible(); };
  press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
  ASSERT_TRUE(waitFor([this] { return !textOf("PresentLoad_value").isEmpty(); }));
  wait.during = nullptr;
  EXPECT_TRUE(waitPanelUp);
  EXPECT_EQ(wait.waits, (std::vector<std::chrono::milliseconds>{50ms, 5000ms}));
  EXPECT_FALSE(find<QWidget>("ContrainerView_WaitView")->isVisible());
  EXPECT_EQ(textOf("ConnectStatus"), strings.text(u"COM_Connect_P1") + portName);
  ASSERT_TRUE(waitFor([this] { return find<QWidget>("sID_value")->isEnabled(); }));
  EXPECT_EQ(textOf("sID_value"), QStringLiteral("1"));
  EXPECT_FALSE(find<QWidget>("sID_value")->toolTip().isEmpty());

  // Four fields are edited: two accepted, one rejected and put back, one left empty.
  enter("sID_value", "42");
  enter("MaxLoad_value", "300");
  const QString gainRead = textOf("Kp_value");
  alert.contents.clear();
  enter("Kp_value", "40000");
  ASSERT_EQ(alert.contents.size(), 1u);
  EXPECT_TRUE(alert.contents[0].informativeText.endsWith(u"0~32766"));
  EXPECT_EQ(textOf("Kp_value"), gainRead);
  enter("OverLoad_value", "");
  EXPECT_EQ(alert.contents.size(), 1u);

  // The write sweep: fifteen frames in order, 0.1 s apart, and one "SetOK" at its end.
  wait.waits.clear();
  alert.contents.clear();
  clearTraffic();
  letRepliesArriveInPauses();
  press("detail_set");
  wait.during = nullptr;
  EXPECT_EQ(wait.waits, std::vector<std::chrono::milliseconds>(15, 100ms));
  ASSERT_TRUE(waitFor([this] { return !alert.contents.empty(); }));
  EXPECT_EQ(alert.contents[0].messageText, strings.text(u"SetOK"));
  EXPECT_EQ(alert.contents.size(), 1u);
  const QStringList writes = trafficLines().filter(QStringLiteral("-> FF 07 92"));
  ASSERT_EQ(writes.size(), 15);
  for (int i = 0; i < 15; ++i) {
    EXPECT_TRUE(writes[i].contains(QStringLiteral("FF 07 92 %1 ").arg(i + 1, 2, 16, QChar(u'0')).toUpper()))
        << writes[i].toStdString();
  }
  int written[3] = {};
  servo.withModel([&](simulator::ServoModel &model) {
    written[0] = model.read(1).value_or(-1);
    written[1] = model.read(8).value_or(-1);
    written[2] = model.read(14).value_or(-1);
  });
  EXPECT_EQ(written[0], 42);
  EXPECT_EQ(written[1], 300);
  EXPECT_EQ(written[2], 0);

  // Capture shows the position, motor_set sends one, relax releases.
  press("capture");
  ASSERT_TRUE(waitFor([this] { return !textOf("angle").isEmpty(); }));
  clearTraffic();
  enter("angle", "600");
  press("motor_set");
  press("relax");
  ASSERT_TRUE(waitFor([this] { return !trafficLines().filter(QStringLiteral("-> FF 04 93")).isEmpty(); }));
  EXPECT_GE(trafficLines().filter(QStringLiteral("-> FF 06 96 02 58")).size(), 2);

  // Reboot and reset through the message panel; each reads everything anew.
  for (const Qt::Key key : {Qt::Key_R, Qt::Key_Delete}) {
    clearTraffic();
    shortcut(key, Qt::ControlModifier | Qt::ShiftModifier);
    ASSERT_TRUE(waitFor([this] { return find<QWidget>("ContrainerView_MsgView")->isVisible(); }));
    press("ok_lab");
    EXPECT_FALSE(find<QWidget>("ContrainerView_MsgView")->isVisible());
    ASSERT_TRUE(
        waitFor([this] { return !trafficLines().filter(QStringLiteral("-> FF 05 91 14")).isEmpty(); }));
  }
  ASSERT_TRUE(waitFor([this] { return textOf("sID_value") == u"1"; })) << "the factory's ID";

  // Detection again.
  clearTraffic();
  shortcut(Qt::Key_D, Qt::ControlModifier);
  ASSERT_TRUE(waitFor([this] { return !trafficLines().filter(QStringLiteral("-> FF 05 91 14")).isEmpty(); }));

  // The plug is pulled, the user is told, and plugging it back in and connecting works again.
  alert.contents.clear();
  const QString oldPath = servo.path();
  servo.unplug();
  ASSERT_TRUE(waitFor([this] { return !alert.contents.empty(); }));
  EXPECT_EQ(alert.contents[0].informativeText, QStringLiteral("Serial Port Was Removed From PC."));
  EXPECT_EQ(textOf("ConnectStatus"), strings.text(u"Not_connect"));
  devices.pullOut(oldPath);
  ASSERT_TRUE(waitFor([this] { return state.allSerialPortsInfo.empty(); }));
  EXPECT_EQ(textOf("sID_value"), QString());
  EXPECT_FALSE(find<QWidget>("sID_value")->isEnabled());
  ASSERT_TRUE(servo.start());
  devices.plugIn(portName, servo.path());
  ASSERT_TRUE(waitFor([this] { return state.allSerialPortsInfo.size() == 1; }));
  EXPECT_EQ(userNotifications.delivered.size(), 2u);
  find<QLineEdit>("PresentLoad_value")->clear();
  connectToServo();
  EXPECT_EQ(textOf("sID_value"), QStringLiteral("1"));

  window->close();
  EXPECT_EQ(endStatus, 0);
}

TEST_F(GuiBench, ThePortDialogListsPortsLiveAndTellsWhatIsBehindThem) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  ASSERT_NE(dialog, nullptr);
  auto *box = dialog->findChild<QComboBox *>();
  EXPECT_EQ(box->count(), 1);
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return box->count() == 2; }));
  EXPECT_EQ(box->itemText(1), QStringLiteral("usbserial-ttyUSB7"));
  EXPECT_TRUE(box->itemData(1, Qt::ToolTipRole).toString().contains(QStringLiteral("/dev/ttyUSB7")));
}

TEST_F(GuiBench, ThePortDialogTellsOfEachPortWhetherItCanBeOpenedAndOpensNone) {
  const auto add = [this](const char *name, const char *path) {
    devices.plugIn(QString::fromLatin1(name), QString::fromLatin1(path));
  };
  add("usbserial-ttyUSB1", "/dev/ttyUSB1");
  add("usbserial-ttyUSB2", "/dev/ttyUSB2");
  add("usbserial-ttyUSB3", "/dev/ttyUSB3");
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 4; }));
  machine.node(QStringLiteral("/dev/ttyUSB1")).mayUse = false;
  machine.node(QStringLiteral("/dev/ttyUSB2"));
  machine.programs.held = QStringLiteral("/dev/ttyUSB2");
  machine.programs.holders = {{12, QStringLiteral("minicom")}};
  shortcut(Qt::Key_P, Qt::ControlModifier);
  ASSERT_NE(dialog, nullptr);
  const auto *box = dialog->findChild<QComboBox *>();
  const auto details = [&](int place) { return box->itemData(place, PortDelegate::detailsRole).toString(); };
  EXPECT_EQ(details(0), servo.path() + QStringLiteral(" · can be opened"));
  EXPECT_EQ(details(1), QStringLiteral("/dev/ttyUSB1 · no permission"));
  EXPECT_EQ(details(2), QStringLiteral("/dev/ttyUSB2 · in use by minicom (12)"));
  EXPECT_EQ(details(3), QStringLiteral("/dev/ttyUSB3 · no longer there"));
  EXPECT_EQ(dialog->findChild<QLabel *>(QStringLiteral("details"))->text(), details(0));
  EXPECT_EQ(terminal.count(Call::Open), 0);
}

TEST_F(GuiBench, ThePortListIsDrawnWithTheNameAndTheDetailsOfEachPort) {
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 2; }));
  shortcut(Qt::Key_P, Qt::ControlModifier);
  auto *box = dialog->findChild<QComboBox *>();
  box->showPopup();
  const QImage drawn = box->view()->viewport()->grab().toImage();
  const double ratio = drawn.devicePixelRatio();
  const auto colours = [&](const QRect &place) {
    std::set<QRgb> seen;
    for (int y = place.top(); y <= place.bottom(); ++y) {
      for (int x = place.left(); x <= place.right(); ++x) {
        seen.insert(drawn.pixel(qFloor(x * ratio), qFloor(y * ratio)));
      }
    }
    return seen.size();
  };
  for (int row = 0; row < 2; ++row) {
    QRect place = box->view()->visualRect(box->model()->index(row, 0)).adjusted(4, 4, -4, -4);
    ASSERT_FALSE(place.isEmpty());
    place.setHeight(place.height() / 2);
    EXPECT_GT(colours(place), 2u) << "the name of " << row;
    place.translate(0, place.height());
    EXPECT_GT(colours(place), 2u) << "the details of " << row;
  }
  box->hidePopup();
}

TEST_F(GuiBench, ThePortDialogSaysWhichPortWillBeOpened) {
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 2; }));
  shortcut(Qt::Key_P, Qt::ControlModifier);
  auto *box = dialog->findChild<QComboBox *>();
  box->setFocus();
  QTest::keyClick(box, Qt::Key_Down);
  EXPECT_EQ(dialog->findChild<QLabel *>(QStringLiteral("details"))->text(),
            QStringLiteral("/dev/ttyUSB7 · no longer there"));
  EXPECT_EQ(dialog->findChild<QLabel *>(QStringLiteral("first"))->text(),
            QStringLiteral("Tavril always opens the first port in the list: usbport-test (can be opened)"));
}

TEST_F(GuiBench, ThePortDialogLooksAnewWhenItsListIsOpened) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  const auto *first = dialog->findChild<QLabel *>(QStringLiteral("first"));
  machine.node(servo.path()).mayUse = false;
  auto *box = dialog->findChild<QComboBox *>();
  box->showPopup();
  EXPECT_TRUE(first->text().endsWith(QStringLiteral("usbport-test (no permission)")))
      << first->text().toStdString();
  box->hidePopup();
}

TEST_F(GuiBench, ThePortDialogShowsTheAdapterThatIsPluggedInAndNotAnEarlierOneAtTheSameNode) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  const auto *box = dialog->findChild<QComboBox *>();
  const auto details = [&] { return box->itemData(1, PortDelegate::detailsRole).toString(); };
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7", QStringLiteral("First Adapter"));
  ASSERT_TRUE(waitFor([&] { return details().startsWith(QStringLiteral("First Adapter · ")); }));
  devices.pullOut("/dev/ttyUSB7");
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7", QStringLiteral("Second Adapter"));
  ASSERT_TRUE(waitFor([&] { return userNotifications.delivered.size() == 3; }));
  EXPECT_TRUE(details().startsWith(QStringLiteral("Second Adapter · "))) << details().toStdString();
}

TEST_F(GuiBench, WhatADeviceCallsItselfIsShownAsPlainText) {
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7", QStringLiteral("<b>x</b>"));
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 2; }));
  shortcut(Qt::Key_P, Qt::ControlModifier);
  const auto *box = dialog->findChild<QComboBox *>();
  EXPECT_TRUE(QTextDocumentFragment::fromHtml(box->itemData(1, Qt::ToolTipRole).toString())
                  .toPlainText()
                  .startsWith(QStringLiteral("<b>x</b> · ")));
  for (const QLabel *label : dialog->findChildren<QLabel *>()) {
    EXPECT_EQ(label->textFormat(), Qt::PlainText) << label->objectName().toStdString();
  }
}

TEST_F(GuiBench, ChoosingTheSecondPortNamesItButTheFirstIsOpened) {
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 2; }));
  shortcut(Qt::Key_P, Qt::ControlModifier);
  auto *box = dialog->findChild<QComboBox *>();
  box->setFocus();
  QTest::keyClick(box, Qt::Key_Down);
  EXPECT_EQ(state.selectPort, 1);
  ASSERT_NE(state.SelectSerial, nullptr);
  EXPECT_EQ(state.SelectSerial->name(), QStringLiteral("usbserial-ttyUSB7"));
  press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
  EXPECT_EQ(application->serialPort()->name(), portName);
}

TEST_F(GuiBench, CancelClosesTheDialogWithoutTouchingAnything) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  press(dialog->findChild<QWidget *>(QStringLiteral("cancel")));
  EXPECT_TRUE(waitFor([this] { return dialog.isNull(); }));
  EXPECT_EQ(state.SelectSerial, nullptr);
  EXPECT_EQ(state.selectPort, 0);
  EXPECT_EQ(state.ToolbarFlag, QString());
  EXPECT_EQ(application->serialPort(), nullptr);
}

TEST_F(GuiBench, CancelLeavesEarlierChoicesInPlace) {
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 2; }));
  const auto chosen = state.allSerialPortsInfo[1];
  state.SelectSerial = chosen;
  state.selectPort = 1;
  state.CancelConnectFlag = QStringLiteral("disconnect");
  find<QWidget>("ContrainerView_WaitView")->hide();
  find<QWidget>("TXcmd")->setProperty("text", QStringLiteral("TX: 1"));
  openDialog();
  EXPECT_EQ(dialog->findChild<QComboBox *>()->currentIndex(), 1) << "the dialog shows what was chosen";
  state.ToolbarFlag = QStringLiteral("SomeRequest");
  press(dialog->findChild<QWidget *>(QStringLiteral("cancel")));
  EXPECT_TRUE(waitFor([this] { return dialog.isNull(); }));
  EXPECT_EQ(state.SelectSerial, chosen);
  EXPECT_EQ(state.selectPort, 1);
  EXPECT_EQ(state.CancelConnectFlag, QStringLiteral("disconnect"));
  EXPECT_EQ(state.ToolbarFlag, QStringLiteral("SomeRequest"));
  EXPECT_EQ(application->serialPort(), nullptr);
  EXPECT_FALSE(find<QWidget>("ContrainerView_WaitView")->isVisible());
  EXPECT_EQ(textOf("TXcmd"), QStringLiteral("TX: 1"));
}

TEST_F(GuiBench, ThePortDialogLogsWhatItShowsAndWhatIsChosen) {
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 2; }));
  openDialog();
  auto *box = dialog->findChild<QComboBox *>();
  log.clear();
  EXPECT_EQ(dialog->objectValueForItemAtIndex(*box, 1), QStringLiteral("usbserial-ttyUSB7"));
  EXPECT_EQ(log.lines(), QStringList({"ID=port", "PortName", "comboBox=1,Name=usbserial-ttyUSB7"}));
  {
    const QSignalBlocker quiet(box);
    box->setCurrentIndex(1);
  }
  log.clear();
  dialog->comboBoxSelectionDidChange(*box);
  EXPECT_EQ(log.lines(), QStringList({"ID=port", "select=1,Value=usbserial-ttyUSB7", "usbserial-ttyUSB7"}));
}

TEST_F(GuiBench, APortThatWasUnpluggedStaysInTheDialogsList) {
  devices.plugIn("usbserial-ttyUSB7", "/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return state.allSerialPortsInfo.size() == 2; }));
  machine.node(QStringLiteral("/dev/ttyUSB7"));
  openDialog();
  const auto *box = dialog->findChild<QComboBox *>();
  const auto details = [&] { return box->itemData(1, PortDelegate::detailsRole).toString(); };
  ASSERT_EQ(details(), QStringLiteral("/dev/ttyUSB7 · can be opened"));
  machine.nodes.nodes.remove(QStringLiteral("/dev/ttyUSB7"));
  devices.pullOut("/dev/ttyUSB7");
  ASSERT_TRUE(waitFor([&] { return userNotifications.delivered.size() == 2; }));
  EXPECT_TRUE(waitFor([&] { return details() == QStringLiteral("/dev/ttyUSB7 · no longer there"); }));
  EXPECT_EQ(box->count(), 2);
  EXPECT_EQ(box->itemText(1), QStringLiteral("usbserial-ttyUSB7"));
  EXPECT_TRUE(dialog->findChild<QWidget *>(QStringLiteral("doneBT"))->isEnabled());
  // Also when the dialog is opened again.
  dialog->reject();
  ASSERT_TRUE(waitFor([this] { return dialog.isNull(); }));
  openDialog();
  EXPECT_EQ(dialog->findChild<QComboBox *>()->count(), 2);
}

TEST_F(GuiBench, Typing1024IntoThePositionRaisesTheAlertAtTheFourthKeystroke) {
  auto *entry = find<QLineEdit>("angle");
  auto *knob = find<KnobView>("MotorPoint");
  entry->setFocus();
  entry->clear();
  QRectF frame = knob->frame();
  for (const QChar digit : QStringLiteral("102")) {
    QTest::keyClick(entry, digit.toLatin1());
    EXPECT_TRUE(alert.contents.empty()) << qPrintable(entry->text());
    EXPECT_NE(knob->frame(), frame) << qPrintable(entry->text());
    frame = knob->frame();
  }
  QTest::keyClick(entry, '4');
  ASSERT_EQ(alert.contents.size(), 1u);
  EXPECT_EQ(alert.contents[0].messageText, QStringLiteral("Error"));
  EXPECT_EQ(alert.contents[0].informativeText, QStringLiteral("Please enter 0~1023 integer."));
  EXPECT_EQ(alert.contents[0].buttons, QStringList(QStringLiteral("OK")));
  EXPECT_EQ(entry->text(), QStringLiteral("1024")) << "and stays as it was typed";
  EXPECT_EQ(knob->frame(), frame);
  QTest::keyClick(entry, Qt::Key_Backspace);
  EXPECT_EQ(alert.contents.size(), 1u);
}

TEST_F(GuiBench, WithNoPortConfirmIsDisabledAndWithOneItIsEnabled) {
  shortcut(Qt::Key_P, Qt::ControlModifier);
  auto *confirm = dialog->findChild<QWidget *>(QStringLiteral("doneBT"));
  EXPECT_TRUE(confirm->isEnabled());
  devices.pullOut(servo.path());
  ASSERT_TRUE(waitFor([&] { return !confirm->isEnabled(); }));
  EXPECT_EQ(dialog->findChild<QComboBox *>()->count(), 0);
}

TEST_F(GuiBench, TheButtonThatGivesUpShowsAfterTheCountdownAndIsHiddenAgainForTheNextWait) {
  servo.withOptions([](simulator::Options &options) { options.mute = true; });
  shortcut(Qt::Key_P, Qt::ControlModifier);
  press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
  ASSERT_TRUE(waitFor([this] { return state.ToolbarFlag.isEmpty() && wait.waits.size() == 2; }));
  EXPECT_FALSE(find<QWidget>("CloseButtonView")->isVisible());
  for (int second = 0; second < 30; ++second) controller().ConnectTimeout();
  EXPECT_EQ(textOf("WaitContent"), strings.text(u"Please_check_device_is_ready"));
  ASSERT_TRUE(find<QWidget>("CloseButtonView")->isVisible());
  press("CloseButton");
  EXPECT_FALSE(find<QWidget>("ContrainerView_WaitView")->isVisible());
  EXPECT_EQ(state.CancelConnectFlag, QStringLiteral("disconnect"));

  servo.withOptions([](simulator::Options &options) { options.mute = false; });
  bool shownInTheNextWait = true;
  wait.during = [&] { shownInTheNextWait = find<QWidget>("CloseButtonView")->isVisible(); };
  connectToServo();
  wait.during = nullptr;
  EXPECT_FALSE(shownInTheNextWait);
}

TEST_F(GuiBench, PointerPressesOnAShownPanelDoNotReachTheScreen) {
  connectToServo();
  shortcut(Qt::Key_R, Qt::ControlModifier | Qt::ShiftModifier);
  ASSERT_TRUE(waitFor([this] { return find<QWidget>("ContrainerView_MsgView")->isVisible(); }));
  clearTraffic();
  QWidget *relax = find<QWidget>("relax");
  auto *below = window->mainScreen().childAt(relax->mapTo(&window->mainScreen(), relax->rect().center()));
  ASSERT_NE(below, nullptr);
  EXPECT_NE(below, relax);
  press(below);
  EXPECT_TRUE(find<QWidget>("ContrainerView_MsgView")->isVisible());
  press("cancel_lab");
  EXPECT_FALSE(find<QWidget>("ContrainerView_MsgView")->isVisible());
  EXPECT_TRUE(trafficLines().filter(QStringLiteral("-> FF 04")).isEmpty());
}

}  // namespace
}  // namespace tavril
