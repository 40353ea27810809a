#include "tests/gui/DialBench.h"

namespace tavril {
namespace {

class PanelsInWindow : public DialBench {
 protected:
  bool isShown(const char *name) { return find<QWidget>(name)->isVisible(); }

  void type(QLineEdit *field, const char *text) {
    field->setFocus();
    field->selectAll();
    QTest::keyClicks(field, QString::fromLatin1(text));
  }
  void askForReboot() {
    choose(strings.text(u"reboot_servo"));
    ASSERT_TRUE(waitFor([this] { return isShown("ContrainerView_MsgView"); }));
  }
  void confirmPort() {
    choose(strings.text(u"port_setting"));
    ASSERT_NE(dialog, nullptr);
    const auto waits = wait.waits.size();
    press(dialog->findChild<QWidget *>(QStringLiteral("doneBT")));
    // The second one is that for the bridge, before which the connection line is set.
    ASSERT_TRUE(waitFor([&] { return wait.waits.size() == waits + 2 && state.ToolbarFlag.isEmpty(); }));
  }
  void letTheCountdownEnd() {
    for (int second = 0; second < 30; ++second) controller().ConnectTimeout();
  }
  void setMute(bool mute) {
    servo.withOptions([mute](simulator::Options &options) { options.mute = mute; });
  }
};

TEST_F(PanelsInWindow, AnUnfinishedPositionIsNotSentByAPanelAndCanBeFinishedAfterIt) {
  connectAndForget();
  type(entry(), "6");
  askForReboot();
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  ASSERT_TRUE(entry()->hasFocus());
  QTest::keyClicks(entry(), QStringLiteral("00"));
  QTest::keyClick(entry(), Qt::Key_Return);
  EXPECT_EQ(entry()->text(), QStringLiteral("600"));
  EXPECT_TRUE(receivesExactly({"FF 06 96 02 58 FE"}));
}

TEST_F(PanelsInWindow, AnUnfinishedValueIsNotCheckedBecauseOfAPanel) {
  connectAndForget();
  auto *field = find<QLineEdit>("sID_value");
  type(field, "254");
  alert.contents.clear();
  askForReboot();
  EXPECT_TRUE(alert.contents.empty());
  QTest::keyClick(QApplication::focusWidget(), Qt::Key_Escape);
  ASSERT_TRUE(field->hasFocus());
  EXPECT_EQ(field->text(), QStringLiteral("254"));
  QTest::keyClick(field, Qt::Key_Return);
  EXPECT_EQ(alert.contents.size(), 1u);
  EXPECT_EQ(field->text(), QStringLiteral("1"));
}

TEST_F(PanelsInWindow, CancelAndEscapeGiveTheConnectionUp) {
  setMute(true);
  for (const bool byKey : {false, true}) {
    confirmPort();
    ASSERT_TRUE(isShown("ContrainerView_WaitView"));
    ASSERT_EQ(textOf("ConnectStatus"), strings.text(u"Serial_port_start_initialization"));
    EXPECT_EQ(state.CancelConnectFlag, QString());
    if (byKey) {
      QTest::keyClick(find<QWidget>("cancel"), Qt::Key_Escape);
    } else {
      press("cancel");
    }
    EXPECT_FALSE(isShown("ContrainerView_WaitView"));
    EXPECT_EQ(textOf("ConnectStatus"), strings.text(u"Not_connect"));
    EXPECT_EQ(state.CancelConnectFlag, QStringLiteral("disconnect"));
    EXPECT_EQ(state.ToolbarFlag, QStringLiteral("MotorInitFail"));
    ASSERT_TRUE(waitFor([this] { return state.ToolbarFlag.isEmpty(); }));
    EXPECT_FALSE(find<QWidget>("sID_value")->isEnabled());
  }
  // An answer that comes after all changes nothing.
  setMute(false);
  controller().FunctionCMD()->Init_Servo();
  ASSERT_TRUE(waitFor([this] { return !application->received().isEmpty(); }));
  EXPECT_EQ(textOf("RXcmd"), QString());
  EXPECT_FALSE(find<QWidget>("sID_value")->isEnabled());
  // Until the user connects again.
  connectToServo();
  EXPECT_EQ(textOf("sID_value"), QStringLiteral("1"));
}

TEST_F(PanelsInWindow, TheButtonThatGivesUpIsNotThereWhenTheWaitPanelIsShown) {
  auto *panel = find<QWidget>("ContrainerView_WaitView");
  letTheCountdownEnd();  // behind a hidden panel
  panel->show();
  EXPECT_FALSE(isShown("CloseButtonView"));
  EXPECT_FALSE(isShown("doctor"));
  letTheCountdownEnd();
  EXPECT_TRUE(isShown("CloseButtonView"));
  EXPECT_TRUE(isShown("doctor"));
  // The user connects anew while the panel is still up.
  setMute(true);
  confirmPort();
  EXPECT_TRUE(panel->isVisible());
  EXPECT_EQ(textOf("WaitContent"), strings.text(u"Serial_port_start_initialization"));
  EXPECT_FALSE(isShown("CloseButtonView"));
  EXPECT_FALSE(isShown("doctor"));
}

}  // namespace
}  // namespace tavril
