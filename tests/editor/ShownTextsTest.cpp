#include "platform/NamedDevice.h"
#include "platform/linux/StringTables.h"
#include "protocol/ConnectionState.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/StatusLists.h"
#include "tests/editor/EditorBench.h"

namespace tavril {
namespace {

class ChosenPort final : public NamedDevice {
 public:
  explicit ChosenPort(QString name) : name_(std::move(name)) {}
  QString name() const override { return name_; }

 private:
  QString name_;
};

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
    ASSERT_TRUE(strings.setLanguage("zh-Hant"));
    controller.languageDidChange();
  }
  QString changed(QStringView name, const KeyedText &text) {
    EXPECT_TRUE(strings.setLanguage("en"));
    state.ObjectDictionaryArray.show(name, text, strings);
    EXPECT_EQ(element(name).text(), text.in(strings.table("en")));
    change();
    return element(name).text();
  }
  QString list(const char *key) { return state.ErrorMsgShowToMegView.value(key).in(strings); }

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
  const auto changed = [this](ConnectionState connection) {
    EXPECT_TRUE(strings.setLanguage("en"));
    showConnection(state, connection, strings);
    change();
    EXPECT_EQ(state.connection, connection);
    return element(u"ConnectStatus").text();
  };
  EXPECT_EQ(changed(ConnectionState::NotConnected), chinese(u"Not_connect"));
  EXPECT_EQ(changed(ConnectionState::Initialising), chinese(u"Serial_port_start_initialization"));
  EXPECT_EQ(changed(ConnectionState::Connected), chinese(u"COM_Connect_P1")) << "no port was chosen";
  for (const QString &port : {QStringLiteral("usbport-test"), QString(), english(u"Not_connect")}) {
    state.SelectSerial = std::make_shared<ChosenPort>(port);
    EXPECT_EQ(changed(ConnectionState::Connected), chinese(u"COM_Connect_P1") + port);
  }
}

TEST_F(ShownTextsTest, EveryMessageThatHasAKey) {
  for (const QStringView key :
       {u"Please_choose_COM_Port_and_Connect_to_device", u"no_servo", u"there_are_more_than_one_servo"}) {
    EXPECT_EQ(changed(u"errormsg", KeyedText(key)), chinese(key));
  }
  for (const char *error : {"Packet Lost Servo Connecting", ""}) {
    EXPECT_EQ(changed(u"errormsg", KeyedText::words(error)), error) << "has no key";
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
    EXPECT_EQ(changed(u"WaitContent", KeyedText(key)), chinese(key));
  }
}

TEST_F(ShownTextsTest, TheNoticeOfEveryRegister) {
  for (const RegisterRow &row : registerCatalogue()) {
    EXPECT_EQ(changed(u"NoticeMSGview", KeyedText(row.noticeKey())), chinese(row.noticeKey()));
  }
  EXPECT_EQ(changed(u"NoticeMSGview", KeyedText()), "");
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
      ASSERT_TRUE(strings.setLanguage("en"));
      state.ErrorMsgShowToMegView = {{"Error", statusErrorList(bits, log).text},
                                     {"Detail", statusDetailList(bits, disabled, log).text}};
      controller.focusCame(u"NoticeMsg_status_error");
      const QString englishErrors = statusErrorList(bits, log).text.in(strings.table("en"));
      EXPECT_EQ(element(u"NoticeMSGview").text(), english(u"NoticeMsg_status_error") + englishErrors + u'\n');
      change();
      const QString chineseErrors = statusErrorList(bits, log).text.in(strings.table("zh-Hant"));
      const QString chineseDetails = statusDetailList(bits, disabled, log).text.in(strings.table("zh-Hant"));
      EXPECT_EQ(element(u"NoticeMSGview").text(), chinese(u"NoticeMsg_status_error") + chineseErrors + u'\n');
      EXPECT_EQ(list("Error"), chineseErrors);
      EXPECT_EQ(list("Detail"), chineseDetails);
    }
  }
}

TEST_F(ShownTextsTest, ANoticeKeepsTheListThatItWasShownWith) {
  state.ErrorMsgShowToMegView["Error"] = statusErrorList(1, log).text;
  controller.focusCame(u"NoticeMsg_status_error");
  state.ErrorMsgShowToMegView["Error"] = statusErrorList(2, log).text;
  change();
  const QString shownWith = statusErrorList(1, log).text.in(strings.table("zh-Hant"));
  EXPECT_EQ(element(u"NoticeMSGview").text(), chinese(u"NoticeMsg_status_error") + shownWith + u'\n');
}

TEST_F(ShownTextsTest, BeforeTheFirstNoticeNoneAppears) {
  change();
  EXPECT_EQ(element(u"NoticeMSGview").text(), "");
  EXPECT_TRUE(view.textLooks.empty());
}

TEST_F(ShownTextsTest, WhatTheServosAnswersSay) {
  const auto decode = [this](const char *reply) {
    ASSERT_TRUE(strings.setLanguage("en"));
    controller.FunctionCMD()->returnErrorCode(QString::fromLatin1(reply).split(u' '));
    change();
  };
  decode("255 5 144 0 254");
  EXPECT_EQ(element(u"errormsg").text(), chinese(u"no_servo"));
  EXPECT_EQ(element(u"ConnectStatus").text(), chinese(u"COM_Connect_P1"));
  decode("255 5 249 4 254");
  EXPECT_EQ(element(u"errormsg").text(), "Packet Lost Servo Connecting") << "has taken the message's place";
  decode("255 5 144 2 254");
  EXPECT_EQ(element(u"errormsg").text(), chinese(u"there_are_more_than_one_servo"));
  decode("255 5 144 1 254");
  EXPECT_EQ(element(u"errormsg").text(), "");
}

TEST_F(ShownTextsTest, GivingUpTheWait) {
  element(u"ConnectStatus").setText("connecting");
  waiting.WaitButton("close");
  change();
  EXPECT_EQ(element(u"ConnectStatus").text(), chinese(u"Not_connect"));
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
