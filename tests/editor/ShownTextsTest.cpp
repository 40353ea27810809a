#include "editor/screen/ShownTexts.h"
#include "platform/TextChange.h"
#include "platform/linux/StringTables.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/StatusLists.h"
#include "tests/editor/EditorBench.h"

namespace tavril {
namespace {

/// The screen's controllers on two tables that came with the program.
class ShownTextsTest : public testing::Test {
 protected:
  ShownTextsTest() {
    buildHelpTables(state, log);
    controller.viewDidLoad();
    message.viewDidLoad();
    waiting.viewDidLoad();
  }

  QString english(QStringView key) const { return strings.table("en").text(key); }
  QString chinese(QStringView key) const { return strings.table("zh-Hant").text(key); }
  ScreenElement &element(QStringView name) { return state.ObjectDictionaryArray.element(name); }
  void change() {
    const TextChange texts(strings.table("en"), strings.table("zh-Hant"));
    ASSERT_TRUE(strings.setLanguage("zh-Hant"));
    controller.languageDidChange(texts);
  }
  QString changed(QStringView name, const QString &text) {
    element(name).setText(text);
    const TextChange texts(strings.table("en"), strings.table("zh-Hant"));
    ShownTexts::change(state, texts);
    return element(name).text();
  }

  RecordingLog log;
  StringTables strings{StringTables::standardFolders().mid(0, 1), log};
  TestDesktop fakes;
  Desktop desktop{fakes.mainQueue, fakes.timers,        fakes.wait, fakes.alert,
                  strings,         fakes.notifications, nullptr,    log};
  SharedState state;
  FrameSender sender{state};
  FakeView view;
  FakeView messageView;
  FakeView waitView;
  ViewController controller{state, sender, view, desktop};
  MsgMain message{state, sender, messageView, desktop};
  WaitMain waiting{state, waitView, desktop};
};

TEST_F(ShownTextsTest, TheScreenAtStartUp) {
  change();
  EXPECT_EQ(element(u"ConnectStatus").text(), chinese(u"Not_connect"));
  EXPECT_EQ(element(u"errormsg").text(), chinese(u"Please_choose_COM_Port_and_Connect_to_device"));
  EXPECT_EQ(element(u"WaitContent").text(), chinese(u"Serial_port_start_initialization"));
  EXPECT_EQ(view["read"].text(), chinese(u"read"));
  EXPECT_EQ(view.fontSizes["read"], chinese(u"fontsize").toDouble());
  EXPECT_EQ(view.title, chinese(u"tavril"));
}

TEST_F(ShownTextsTest, EveryConnectionState) {
  for (const QStringView key : {u"Not_connect", u"Serial_port_start_initialization"}) {
    EXPECT_EQ(changed(u"ConnectStatus", english(key)), chinese(key));
  }
  for (const QString &port : {QStringLiteral("usbport-test"), QString(), english(u"Not_connect")}) {
    EXPECT_EQ(changed(u"ConnectStatus", english(u"COM_Connect_P1") + port),
              chinese(u"COM_Connect_P1") + port);
  }
}

TEST_F(ShownTextsTest, EveryMessageThatHasAKey) {
  for (const QStringView key :
       {u"Please_choose_COM_Port_and_Connect_to_device", u"no_servo", u"there_are_more_than_one_servo"}) {
    EXPECT_EQ(changed(u"errormsg", english(key)), chinese(key));
  }
  for (const char *error : {"Packet Lost Servo Connecting", ""}) {
    EXPECT_EQ(changed(u"errormsg", error), error) << "has no key";
  }
}

TEST_F(ShownTextsTest, AQuestionStillMeansTheSame) {
  state.CanUseTavril = QStringLiteral("true");
  for (const auto &[word, frame] :
       {std::pair{"RebootServo", "FF0494FE"}, std::pair{"ResetServo", "FF0495FE"}}) {
    ASSERT_TRUE(strings.setLanguage("en"));
    state.ToolbarFlag = QString::fromLatin1(word);
    controller.update();
    ASSERT_FALSE(view["ContrainerView_MsgView"].isHidden());
    const QString question = element(u"_MsgContent").text();
    change();
    EXPECT_NE(element(u"_MsgContent").text(), question);
    sender.sent.clear();
    message.MsgButton("ok");
    EXPECT_EQ(sender.sent, frames({frame})) << word;
  }
}

TEST_F(ShownTextsTest, WhatIsWaitedFor) {
  for (const QStringView key : {u"Serial_port_start_initialization", u"Please_check_device_is_ready"}) {
    EXPECT_EQ(changed(u"WaitContent", english(key)), chinese(key));
  }
}

TEST_F(ShownTextsTest, TheNoticeOfEveryRegister) {
  for (const RegisterRow &row : registerCatalogue()) {
    EXPECT_EQ(changed(u"NoticeMSGview", english(row.noticeKey())), chinese(row.noticeKey()));
  }
  EXPECT_EQ(changed(u"NoticeMSGview", ""), "");
}

TEST_F(ShownTextsTest, TheNoticeThatStaysWhileThePointerIsBetweenRows) {
  controller.mouseMoved({500, 400});
  ASSERT_EQ(element(u"NoticeMSGview").text(), english(u"NoticeMsg_kp"));
  change();
  EXPECT_EQ(element(u"NoticeMSGview").text(), chinese(u"NoticeMsg_kp"));
  controller.mouseMoved({500, 616});
  EXPECT_EQ(element(u"NoticeMSGview").text(), chinese(u"NoticeMsg_kp"));
}

TEST_F(ShownTextsTest, ANoticeWithAStatusListAndTheListsThatAreKept) {
  for (const int bits : {0xff, 0x10, 0x81}) {
    for (const bool disabled : {false, true}) {
      const QString errors = statusErrorList(bits, strings.table("en"), log).text;
      const QString details = statusDetailList(bits, disabled, strings.table("en"), log).text;
      state.ErrorMsgShowToMegView = {{"Error", errors}, {"Detail", details}};
      const QString chineseErrors = statusErrorList(bits, strings.table("zh-Hant"), log).text;
      const QString chineseDetails = statusDetailList(bits, disabled, strings.table("zh-Hant"), log).text;
      EXPECT_EQ(changed(u"NoticeMSGview", english(u"NoticeMsg_status_error") + errors + u'\n'),
                chinese(u"NoticeMsg_status_error") + chineseErrors + u'\n');
      EXPECT_EQ(state.ErrorMsgShowToMegView.value("Error"), chineseErrors);
      EXPECT_EQ(state.ErrorMsgShowToMegView.value("Detail"), chineseDetails);
    }
  }
}

TEST_F(ShownTextsTest, ToolTipsOfFieldsThatCanBeUsedAndOfThoseThatCannot) {
  state.ToolbarFlag = QStringLiteral("MotorInitOK");
  controller.update();
  view["Kp_value"].setToolTip(QString());
  change();
  EXPECT_EQ(view["sID_value"].toolTip(), chinese(u"ToolTip_sid"));
  EXPECT_EQ(view["CalibrationAngle_value"].toolTip(), chinese(u"ToolTip_calibration_angle"));
  EXPECT_EQ(view["Kp_value"].toolTip(), "");
}

TEST_F(ShownTextsTest, ValuesAndFramesAreNoTexts) {
  const QString value = english(u"read");
  for (const char *name : {"sID_value", "TXcmd", "RXcmd", "angle"}) view[name].setText(value);
  change();
  for (const char *name : {"sID_value", "TXcmd", "RXcmd", "angle"})
    EXPECT_EQ(view[name].text(), value) << name;
}

}  // namespace
}  // namespace tavril
