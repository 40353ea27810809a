#include "protocol/RegisterCatalogue.h"
#include "tests/editor/EditorBench.h"
#include "tests/editor/LabelTexts.h"

#include <cmath>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using ViewControllerTest = EditorBench;

// ------------------------------------------------------------------------------------------------ start-up

TEST_F(ViewControllerTest, LoadingRegistersEveryElementUnderItsKey) {
  for (const char *name : {"TXcmd", "RXcmd", "NoticeMSGview", "errormsg", "ConnectStatus"}) {
    EXPECT_EQ(state.ObjectDictionaryArray.find(QString::fromLatin1(name)), &view[name]) << name;
  }
  for (const RegisterRow &row : registerCatalogue()) {
    EXPECT_EQ(state.ObjectDictionaryArray.find(row.valueKey), &view.element(row.valueKey)) << row.number;
  }
}

TEST_F(ViewControllerTest, TheContainersAreRegisteredUnderTheirTwoSpellings) {
  EXPECT_EQ(state.ObjectDictionaryArray.find(u"ContainerView_MsgView"), &view["ContrainerView_MsgView"]);
  EXPECT_EQ(state.ObjectDictionaryArray.find(u"ContrainerView_WaitView"), &view["ContrainerView_WaitView"]);
  EXPECT_EQ(state.ObjectDictionaryArray.find(u"ContrainerView_MsgView"), nullptr);
}

TEST_F(ViewControllerTest, LoadingHidesThePanelsAndShowsWhatToDo) {
  EXPECT_TRUE(view["ContrainerView_MsgView"].isHidden());
  EXPECT_TRUE(view["ContrainerView_WaitView"].isHidden());
  EXPECT_EQ(view["errormsg"].text(), "[Please_choose_COM_Port_and_Connect_to_device]");
  EXPECT_EQ(view["ConnectStatus"].text(), "[Not_connect]");
  EXPECT_TRUE(sender.sent.empty()) << "nothing is sent before the user connects";
}

TEST_F(ViewControllerTest, LoadingSeedsTheTwelveEntriesWithTheFieldsThemselves) {
  EXPECT_EQ(state.textFieldValue.size(), 12);
  for (const RegisterRow &row : settingRegisters()) {
    EXPECT_EQ(state.textFieldValue.contains(row.entryKey.toString()), !row.entryKey.isEmpty()) << row.number;
  }
  EXPECT_TRUE(state.textFieldValue.value("sID").isSeed());
  view["sID_value"].setText("typed");
  EXPECT_EQ(state.textFieldValue.value("sID").text(), "typed");
}

TEST_F(ViewControllerTest, LoadingEmptiesTheStatusLists) {
  EXPECT_EQ(state.ErrorMsgShowToMegView.size(), 2);
  EXPECT_EQ(state.ErrorMsgShowToMegView.value("Error", KeyedText(u"none")).in(fakes.strings), "");
  EXPECT_EQ(state.ErrorMsgShowToMegView.value("Detail", KeyedText(u"none")).in(fakes.strings), "");
}

TEST_F(ViewControllerTest, LoadingLogsTheHelpTables) {
  const QString logged = fakes.log.lines().first();
  EXPECT_TRUE(logged.startsWith("\nInitServo=(")) << logged.toStdString();
  EXPECT_TRUE(logged.contains("\nMinVolt=The minimum value of Orvane servo operating voltage.\n"));
  EXPECT_EQ(logged.count('\n'), 16);
}

TEST_F(ViewControllerTest, TheScreenTicksEveryHundredthOfASecond) {
  state.ToolbarFlag = "DetectionMotro";
  fakes.timers.advance(9ms);
  EXPECT_TRUE(sender.sent.empty());
  fakes.timers.advance(1ms);
  EXPECT_EQ(sender.sent, frames({"FF0490FE"}));
}

// ------------------------------------------------------------------------------------------------ requests

TEST_F(ViewControllerTest, MotorInitOkEnablesFieldsAndControlsWithToolTips) {
  for (int tag = 100; tag <= 104; ++tag) view.controlWithTag(tag)->setEnabled(false);
  for (const RegisterRow &row : registerCatalogue()) view.element(row.valueKey).setEnabled(false);
  EXPECT_EQ(tickWith("MotorInitOK"), "");
  for (int tag = 100; tag <= 104; ++tag) EXPECT_TRUE(view.controlWithTag(tag)->isEnabled()) << tag;
  for (const RegisterRow &row : registerCatalogue()) {
    EXPECT_EQ(view.element(row.valueKey).isEnabled(), row.isSetting()) << row.number;
    const QString toolTip = row.isSetting() ? u'[' + row.toolTipKey() + u']' : QString();
    EXPECT_EQ(view.element(row.valueKey).toolTip(), toolTip) << row.number;
  }
}

TEST_F(ViewControllerTest, MotorInitFailWhileNoCountdownRunsStillDisablesTheControls) {
  tickWith("MotorInitOK");
  EXPECT_EQ(tickWith("MotorInitFail"), "");
  for (int tag = 100; tag <= 104; ++tag) EXPECT_FALSE(view.controlWithTag(tag)->isEnabled()) << tag;
  for (const RegisterRow &row : settingRegisters()) {
    EXPECT_FALSE(view.element(row.valueKey).isEnabled()) << row.number;
    EXPECT_EQ(view.element(row.valueKey).toolTip(), "") << row.number;
  }
}

TEST_F(ViewControllerTest, AnUnknownWordStaysAndTheNextKnownOneReplacesIt) {
  EXPECT_EQ(tickWith("Nonsense"), "Nonsense");
  EXPECT_EQ(tickWith("Nonsense"), "Nonsense");
  EXPECT_EQ(tickWith("DetectionMotro"), "");
  EXPECT_EQ(sender.sent.size(), 1u);
}

TEST_F(ViewControllerTest, AnEmptyWordDoesNothing) {
  EXPECT_EQ(tickWith(""), "");
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_EQ(view.knobMoves, 0);
}

TEST_F(ViewControllerTest, UpdateMotorValueShowsThePositionReply) {
  state.returnSTR = "512";
  EXPECT_EQ(tickWith("UpdateMotorValue"), "");
  EXPECT_EQ(view["angle"].text(), "512");
}

TEST_F(ViewControllerTest, RebootAndResetAskInTheMessagePanelWhenAServoWasFound) {
  state.CanUseTavril = "true";
  EXPECT_EQ(tickWith("RebootServo"), "");
  EXPECT_FALSE(view["ContrainerView_MsgView"].isHidden());
  EXPECT_EQ(messageView["MsgContent"].text(), "[reboot]");
  view["ContrainerView_MsgView"].setHidden(true);
  EXPECT_EQ(tickWith("ResetServo"), "");
  EXPECT_FALSE(view["ContrainerView_MsgView"].isHidden());
  EXPECT_EQ(messageView["MsgContent"].text(), "[reset]");
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(ViewControllerTest, WithNoServoFoundARebootIsRefusedWithAnAlert) {
  for (const char *flag : {"", "fail"}) {
    fakes.alert.contents.clear();
    state.CanUseTavril = flag;
    QString wordDuringTheAlert = "unset";
    fakes.alert.whileUp = [&] { wordDuringTheAlert = state.ToolbarFlag; };
    tickWith("RebootServo");
    ASSERT_EQ(fakes.alert.contents.size(), 1u);
    EXPECT_EQ(fakes.alert.contents[0].messageText, "[Error]");
    EXPECT_EQ(fakes.alert.contents[0].informativeText, "[Not_connect]");
    EXPECT_EQ(fakes.alert.contents[0].buttons, QStringList{"[Confirm]"});
    EXPECT_TRUE(view["ContrainerView_MsgView"].isHidden());
    EXPECT_EQ(wordDuringTheAlert, "") << "the word is cleared before the panel or alert opens";
  }
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(ViewControllerTest, AtMostOneRequestIsCarriedOutPerTick) {
  state.ToolbarFlag = "InitSerialPort";
  controller.update();
  EXPECT_EQ(state.ToolbarFlag, "");
  controller.update();
  fakes.log.clear();
  fakes.timers.advance(1s);
  EXPECT_EQ(fakes.log.lines().filter("cnt="), QStringList{"cnt=29"});
}

// ------------------------------------------------------------------------------------------------ position

TEST_F(ViewControllerTest, Position1023MovesTheDotAnd1024ChangesNothing) {
  controller.UpdateMotorValue(1023);
  EXPECT_EQ(view["angle"].text(), "1023");
  EXPECT_EQ(view.knobMoves, 1);
  controller.UpdateMotorValue(1024);
  controller.UpdateMotorValue(65535);
  EXPECT_EQ(view["angle"].text(), "1023");
  EXPECT_EQ(view.knobMoves, 1);
}

TEST_F(ViewControllerTest, Position0StandsAt300DegreesAnd205JustPast0) {
  controller.UpdateMotorValue(0);
  EXPECT_NEAR(view.knob.x, 806 + 33, 0.001);
  EXPECT_NEAR(view.knob.y, 528 - 57.158, 0.001);
  EXPECT_EQ(view.knob.width, 22);
  EXPECT_EQ(view.knob.height, 22);
  controller.UpdateMotorValue(205);
  EXPECT_NEAR(view.knob.x, 806 + 66, 0.001);
  EXPECT_NEAR(view.knob.y, 528 + 66 * std::sin(0.117302 * M_PI / 180), 0.001);
}

TEST_F(ViewControllerTest, ANegativePositionIsPlacedBelow300DegreesAndShown) {
  controller.UpdateMotorValue(-10);
  EXPECT_EQ(view["angle"].text(), "-10");
  EXPECT_NEAR(view.knob.x, 806 + 66 * std::cos(297.0674 * M_PI / 180), 0.001);
}

TEST_F(ViewControllerTest, ThePositionIsLoggedWithItsAngle) {
  fakes.log.clear();
  controller.UpdateMotorValue(341);
  EXPECT_EQ(fakes.log.lines(), QStringList{"str=341,angle=100.000000"});
}

// ------------------------------------------------------------------------------------------------- layout

TEST_F(ViewControllerTest, ALayoutPassSetsTitleTextsAndFontSizes) {
  fakes.strings.texts["fontsize"] = "13.5";
  controller.viewWillLayout();
  EXPECT_EQ(view.title, "[tavril]");
  EXPECT_EQ(view["max_temperature"].text(), "[max_tempertaure]");
  EXPECT_EQ(view["calibretion_angle"].text(), "[calibration_angle]");
  EXPECT_EQ(view["detail_set"].text(), "[detail_set]");
  EXPECT_EQ(view.fontSizes.size(), 31u);
  for (const auto &[label, size] : view.fontSizes) EXPECT_EQ(size, 13.5) << label.toStdString();
}

TEST_F(ViewControllerTest, ALayoutPassGivesEachOfThe31LabelsTheTextOfItsKeyInOrder) {
  static_assert(std::size(labelTexts) == 31);
  QStringList expected;
  for (const auto &[name, key] : labelTexts) {
    expected.append(QStringLiteral("%1=[%2]").arg(QString::fromLatin1(name), QString::fromUtf16(key)));
  }
  controller.viewWillLayout();
  EXPECT_EQ(view.labelPass, expected);
}

TEST_F(ViewControllerTest, AStringTableWithoutFontsizeYieldsSizeZero) {
  controller.viewWillLayout();
  EXPECT_EQ(view.fontSizes.at("sid"), 0);
}

TEST_F(ViewControllerTest, ChangingFontsizeChangesAll31LabelsAtOnceAndNothingElse) {
  controller.viewWillLayout();
  const QString status = view["ConnectStatus"].text();
  fakes.strings.texts["fontsize"] = "20";
  controller.viewWillLayout();
  EXPECT_EQ(view.fontSizes.size(), 31u);
  for (const auto &[label, size] : view.fontSizes) EXPECT_EQ(size, 20) << label.toStdString();
  EXPECT_EQ(view["ConnectStatus"].text(), status);
}

// ------------------------------------------------------------------------------------------------ commands

TEST_F(ViewControllerTest, TheButtonsSendTheirCommands) {
  view["angle"].setText("512");
  for (const char *identifier : {"relax", "capture", "motorset", "read"}) {
    controller.LabelTouchEvent(QString::fromLatin1(identifier));
  }
  EXPECT_EQ(sender.sent, frames({"FF0493FE", "FF0497FE", "FF06960200FE", "FF059101FE"}));
}

TEST_F(ViewControllerTest, EachOfTheFiveButtonsAloneIsBlackFromItsClickForATenthOfASecond) {
  using Colors = std::map<ButtonName, LabelColor>;
  constexpr std::pair<const char *, ButtonName> buttons[]{
      {"relax", ButtonName::Relax}, {"capture", ButtonName::Capture},     {"motorset", ButtonName::MotorSet},
      {"read", ButtonName::Read},   {"detailset", ButtonName::DetailSet},
  };
  for (const auto &[identifier, button] : buttons) {
    view.colors.clear();
    controller.LabelTouchEvent(QString::fromLatin1(identifier));
    EXPECT_EQ(view.colors, (Colors{{button, LabelColor::Black}})) << identifier;
    fakes.timers.advance(99ms);
    EXPECT_EQ(view.colors, (Colors{{button, LabelColor::Black}})) << identifier << " is black for 0.1 s";
    fakes.timers.advance(1ms);
    EXPECT_EQ(view.colors, (Colors{{ButtonName::Relax, LabelColor::White},
                                   {ButtonName::Capture, LabelColor::White},
                                   {ButtonName::MotorSet, LabelColor::White},
                                   {ButtonName::Read, LabelColor::White},
                                   {ButtonName::DetailSet, LabelColor::White}}))
        << identifier;
  }
}

TEST_F(ViewControllerTest, MotorsetWith2000InThePositionEntrySends2000Unchecked) {
  view["angle"].setText("2000");
  controller.LabelTouchEvent("motorset");
  EXPECT_EQ(sender.sent, frames({"FF069607D0FE"}));
  EXPECT_TRUE(fakes.alert.contents.empty());
}

TEST_F(ViewControllerTest, DetailsetSendsExactlyFifteenWriteFramesInOrder) {
  for (const RegisterRow &row : settingRegisters())
    view.element(row.valueKey).setText(QString::number(row.number));
  view["MaxLoad_value"].setText("300");
  view["CalibrationAngle_value"].setText("-10");
  view["ACK_value"].setText("abc");
  controller.LabelTouchEvent("detailset");
  ASSERT_EQ(sender.sent.size(), 15u);
  for (int number = 1; number <= 15; ++number) {
    EXPECT_EQ(sender.sent[static_cast<std::size_t>(number - 1)].at(3), static_cast<char>(number));
  }
  EXPECT_EQ(sender.sent[1], QByteArray::fromHex("FF0792020000FE")) << "a text that is no number writes 0";
  EXPECT_EQ(sender.sent[7], QByteArray::fromHex("FF079208012CFE"));
  EXPECT_EQ(sender.sent[14], QByteArray::fromHex("FF07920FFFF6FE"));
  EXPECT_EQ(fakes.wait.waits, std::vector<std::chrono::milliseconds>(15, 100ms));
  EXPECT_EQ(controller.cmdcnt, 1);
}

TEST_F(ViewControllerTest, DetailsetWaitsAfterEachWriteAndIsBlackMeanwhile) {
  std::vector<std::size_t> writesBeforeEachWait;
  std::vector<LabelColor> colors;
  fakes.wait.during = [&] {
    writesBeforeEachWait.push_back(sender.sent.size());
    colors.push_back(view.colors.at(ButtonName::DetailSet));
  };
  controller.LabelTouchEvent("detailset");
  EXPECT_EQ(writesBeforeEachWait,
            (std::vector<std::size_t>{1, 2, 3, 4, 5, 6, 7, 8, 9, 10, 11, 12, 13, 14, 15}));
  EXPECT_EQ(colors, std::vector<LabelColor>(15, LabelColor::Black));
}

TEST_F(ViewControllerTest, AClickOnAnyOtherLabelOnlySchedulesTheColourReset) {
  controller.LabelTouchEvent("somethingelse");
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_TRUE(view.colors.empty());
  fakes.timers.advance(100ms);
  EXPECT_EQ(view.colors.size(), 5u);
}

TEST_F(ViewControllerTest, TheDiagnosticActionReadsThePosition) {
  controller.test();
  EXPECT_EQ(sender.sent, frames({"FF0497FE"}));
}

TEST_F(ViewControllerTest, ThePleaseWaitAlertIsKept) {
  fakes.alert.answers = {ModalAlert::secondButton};
  fakes.log.clear();
  controller.actIndicatorBegin();
  EXPECT_EQ(fakes.alert.contents[0].messageText, "Please Wait...");
  EXPECT_EQ(fakes.alert.contents[0].informativeText, "");
  EXPECT_TRUE(fakes.alert.contents[0].buttons.isEmpty());
  EXPECT_EQ(fakes.log.lines(), QStringList{"Cancel"});
}

// ----------------------------------------------------------------------------------------------- countdown

TEST_F(ViewControllerTest, WithNoServoTheFailureNoticeIsShownAfterThirtyTicks) {
  waitView["CloseButtonView"].setHidden(true);
  view["ConnectStatus"].setText("connecting");
  tickWith("InitSerialPort");
  fakes.timers.advance(29s);
  EXPECT_TRUE(waitView["CloseButtonView"].isHidden());
  EXPECT_EQ(view["ConnectStatus"].text(), "connecting");
  EXPECT_EQ(controller.cnt, 1);
  fakes.timers.advance(1s);
  EXPECT_FALSE(waitView["CloseButtonView"].isHidden());
  EXPECT_EQ(waitView["WaitContent"].text(), "[Please_check_device_is_ready]");
  EXPECT_EQ(view["ConnectStatus"].text(), "[Not_connect]");
  EXPECT_EQ(controller.cnt, 30);
  fakes.log.clear();
  fakes.timers.advance(60s);
  EXPECT_TRUE(fakes.log.lines().filter("cnt=").isEmpty()) << "the countdown goes on";
}

TEST_F(ViewControllerTest, AServoAnsweringAfterTenSecondsStopsTheCountdown) {
  tickWith("InitSerialPort");
  fakes.timers.advance(10s);
  tickWith("MotorInitOK");
  fakes.timers.advance(60s);
  EXPECT_EQ(waitView["WaitContent"].text(), "[Serial_port_start_initialization]");
}

TEST_F(ViewControllerTest, GivingUpInTheWaitPanelStopsTheCountdownThroughMotorInitFail) {
  tickWith("InitSerialPort");
  fakes.timers.advance(5s);
  waiting.WaitButton("close");
  fakes.timers.advance(10ms);
  fakes.log.clear();
  fakes.timers.advance(60s);
  EXPECT_TRUE(fakes.log.lines().filter("cnt=").isEmpty());
  EXPECT_EQ(waitView["WaitContent"].text(), "[Serial_port_start_initialization]");
}

TEST_F(ViewControllerTest, TwoCountdownsAtOnceRunTwiceAsFast) {
  tickWith("InitSerialPort");
  fakes.timers.advance(500ms);
  tickWith("InitSerialPort");
  fakes.timers.advance(14s);
  EXPECT_EQ(controller.cnt, 2);
  fakes.timers.advance(1s);
  EXPECT_EQ(waitView["WaitContent"].text(), "[Please_check_device_is_ready]");
}

TEST_F(ViewControllerTest, EachOfItsThreeEndsEndsBothOfTwoCountdowns) {
  constexpr const char *expiry = nullptr;
  for (const char *word : {"MotorInitOK", "MotorInitFail", expiry}) {
    const std::string end = word ? word : "expiry";
    tickWith("InitSerialPort");
    fakes.timers.advance(500ms);
    tickWith("InitSerialPort");
    if (word) {
      tickWith(word);
    } else {
      fakes.timers.advance(15s);
      ASSERT_EQ(view["ConnectStatus"].text(), "[Not_connect]");
    }
    view["ConnectStatus"].setText("as it was");
    waitView["CloseButtonView"].setHidden(true);
    fakes.log.clear();
    fakes.timers.advance(100s);
    EXPECT_EQ(fakes.log.lines().filter("cnt="), QStringList()) << end;
    EXPECT_EQ(view["ConnectStatus"].text(), "as it was") << end;
    EXPECT_TRUE(waitView["CloseButtonView"].isHidden()) << end;
  }
}

// ------------------------------------------------------------------------------------------------- its end

TEST(ViewControllerEnd, LeavesNoTimerRunning) {
  TestDesktop fakes;
  SharedState state;
  FrameSender sender(state);
  FakeView view;
  {
    ViewController controller(state, sender, view, fakes.desktop);
    controller.viewDidLoad();
    state.ToolbarFlag = "InitSerialPort";
    controller.update();
    state.ToolbarFlag = "InitSerialPort";
    controller.update();
    controller.LabelTouchEvent("relax");
    fakes.timers.advance(50ms);
    controller.LabelTouchEvent("read");
    EXPECT_EQ(fakes.timers.running(), 5u) << "the tick, two countdowns, two flashes";
  }
  EXPECT_EQ(fakes.timers.running(), 0u);
}

}  // namespace
}  // namespace tavril
