#include "editor/windows/WindowsCtrl.h"
#include "tests/editor/EditorBench.h"

namespace tavril {
namespace {

class Panels : public EditorBench {
 protected:
  void ask(const char *request) {
    state.CanUseTavril = "true";
    tickWith(request);
    ASSERT_FALSE(view["ContrainerView_MsgView"].isHidden());
  }
};

TEST_F(Panels, LoadingSetsTheTextsAndRegistersWhatOthersChange) {
  EXPECT_EQ(messageView["MsgTittle"].text(), "[warning]");
  EXPECT_EQ(messageView["cancel_lab"].text(), "[CancelBT]");
  EXPECT_EQ(messageView["ok_lab"].text(), "[Confirm]");
  EXPECT_EQ(state.ObjectDictionaryArray.find(u"_MsgContent"), &messageView["MsgContent"]);
  EXPECT_EQ(waitView["WaitTittle"].text(), "[Confirm]");
  EXPECT_EQ(waitView["WaitContent"].text(), "[Serial_port_start_initialization]");
  EXPECT_EQ(waitView["cancel"].text(), "[CancelBT]");
  EXPECT_EQ(state.ObjectDictionaryArray.find(u"WaitContent"), &waitView["WaitContent"]);
  EXPECT_EQ(state.ObjectDictionaryArray.find(u"CloseButtonView"), &waitView["CloseButtonView"]);
}

TEST_F(Panels, OkRebootsOrResetsByTheQuestionShown) {
  ask("RebootServo");
  message.MsgButton("ok");
  EXPECT_TRUE(view["ContrainerView_MsgView"].isHidden());
  ask("ResetServo");
  message.MsgButton("ok");
  EXPECT_EQ(sender.sent, frames({"FF0494FE", "FF0495FE"}));
  EXPECT_EQ(messageView.tagColors, (std::map<int, LabelColor>{{1000, LabelColor::Black}}));
}

TEST_F(Panels, OkWithAnyOtherQuestionSendsNothingAndOnlyHidesThePanel) {
  ask("RebootServo");
  messageView["MsgContent"].setText("something else");
  message.MsgButton("ok");
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_TRUE(view["ContrainerView_MsgView"].isHidden());
}

TEST_F(Panels, CancelAndCloseHideThePanelAndSendNothing) {
  ask("RebootServo");
  fakes.log.clear();
  message.MsgButton("cancel");
  EXPECT_TRUE(view["ContrainerView_MsgView"].isHidden());
  EXPECT_EQ(messageView.tagColors, (std::map<int, LabelColor>{{999, LabelColor::Black}}));
  EXPECT_EQ(fakes.log.lines(), QStringList{"cancel"});
  ask("ResetServo");
  message.MsgButton("close");
  EXPECT_TRUE(view["ContrainerView_MsgView"].isHidden());
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(Panels, TheWaitPanelsCloseButtonHidesItAndGivesTheAttemptUp) {
  view["ContrainerView_WaitView"].setHidden(false);
  view["ConnectStatus"].setText("connecting");
  waiting.WaitButton("close");
  EXPECT_EQ(view["ConnectStatus"].text(), "[Not_connect]");
  EXPECT_EQ(state.ToolbarFlag, "MotorInitFail");
  EXPECT_EQ(state.CancelConnectFlag, "disconnect");
  EXPECT_TRUE(view["ContrainerView_WaitView"].isHidden());
}

TEST_F(Panels, AnyOtherIdentifierOnlyHidesTheWaitPanel) {
  for (const char *identifier : {"cancel", "ok", ""}) {
    view["ContrainerView_WaitView"].setHidden(false);
    view["ConnectStatus"].setText("connecting");
    waiting.WaitButton(QString::fromLatin1(identifier));
    EXPECT_EQ(state.ToolbarFlag, "") << identifier;
    EXPECT_EQ(state.CancelConnectFlag, "") << identifier;
    EXPECT_EQ(view["ConnectStatus"].text(), "connecting") << identifier;
    EXPECT_TRUE(view["ContrainerView_WaitView"].isHidden()) << identifier;
  }
}

TEST_F(Panels, ClosingTheMainWindowEndsTheProcessWithStatus0) {
  int status = -1;
  WindowsCtrl window(view, fakes.desktop, [&](int given) { status = given; });
  window.windowDidLoad();
  EXPECT_EQ(view.title, "[tavril]");
  fakes.log.clear();
  window.windowShouldClose();
  EXPECT_EQ(status, 0);
  EXPECT_EQ(fakes.log.lines(), QStringList{"OK"});
}

}  // namespace
}  // namespace tavril
