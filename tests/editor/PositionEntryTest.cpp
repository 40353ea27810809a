#include "tests/editor/EditorBench.h"

namespace tavril {
namespace {

class PositionEntryTest : public EditorBench {
 protected:
  /// Types the text one character after the other; how many alerts that raised.
  std::size_t type(const QString &text) {
    fakes.alert.contents.clear();
    for (qsizetype length = 1; length <= text.size(); ++length) {
      view["angle"].setText(text.first(length));
      controller.positionEntry().controlTextDidChange();
    }
    return fakes.alert.contents.size();
  }
  void end(const QString &text) {
    fakes.alert.contents.clear();
    view["angle"].setText(text);
    controller.positionEntry().controlTextDidEndEditing();
  }
};

TEST_F(PositionEntryTest, Typing1024RaisesTheAlertAtTheFourthKeystrokeAnd102MovesTheDot) {
  EXPECT_EQ(type("102"), 0u);
  EXPECT_EQ(view.knobMoves, 3);
  EXPECT_EQ(type("1024"), 1u);
  EXPECT_EQ(view.knobMoves, 6);
  EXPECT_EQ(fakes.alert.contents[0].messageText, "Error");
  EXPECT_EQ(fakes.alert.contents[0].informativeText, "Please enter 0~1023 integer.");
  EXPECT_EQ(fakes.alert.contents[0].buttons, QStringList{"OK"});
  EXPECT_EQ(view["angle"].text(), "1024") << "a rejected position stays as typed";
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(PositionEntryTest, ACharacterThatIsNoDigitRaisesTheAlert) {
  EXPECT_EQ(type("-"), 1u);
  EXPECT_EQ(type("5-"), 1u) << "also where the number would do";
  EXPECT_EQ(type("x"), 1u);
}

TEST_F(PositionEntryTest, AnEmptyEntryCountsAsZero) {
  view["angle"].setText("");
  controller.positionEntry().controlTextDidChange();
  EXPECT_TRUE(fakes.alert.contents.empty());
  EXPECT_NEAR(view.knob.x, 839, 0.001);
}

TEST_F(PositionEntryTest, EndingAValidEntrySendsIt) {
  state.CanUseTavril = "true";
  end("1023");
  EXPECT_EQ(sender.sent, frames({"FF069603FFFE"}));
  EXPECT_EQ(view.knobMoves, 1);
}

TEST_F(PositionEntryTest, EndingAValidEntryBeforeAServoWasFoundMovesTheDotButSendsNothing) {
  end("512");
  EXPECT_EQ(view.knobMoves, 1);
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(PositionEntryTest, EndingWhileMouseDownIsSetSendsNothingAndShowsNoAlert) {
  state.CanUseTavril = "true";
  state.TextMouseFlag = "MouseDown";
  end("5000");
  end("512");
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_TRUE(fakes.alert.contents.empty());
  EXPECT_EQ(view.knobMoves, 0);
}

TEST_F(PositionEntryTest, EndingABadEntryRaisesTheAlertAndSendsNothing) {
  state.CanUseTavril = "true";
  for (const char *text : {"1024", "12a", "-5", "5-", "99999999999"}) {
    end(text);
    EXPECT_EQ(fakes.alert.contents.size(), 1u) << text;
  }
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(PositionEntryTest, EditingIsLogged) {
  fakes.log.clear();
  view["angle"].setText("7");
  controller.positionEntry().controlTextDidBeginEditing("<angle>");
  controller.positionEntry().controlTextDidChange();
  controller.positionEntry().controlTextDidEndEditing();
  const QStringList lines = fakes.log.lines();
  ASSERT_EQ(lines.size(), 7);
  EXPECT_EQ(lines.first(2), (QStringList{"BeginEditing=7", "obj=<angle>"}));
  EXPECT_EQ(lines[2], "");
  EXPECT_TRUE(lines[3].startsWith("a=35.")) << lines[3].toStdString();
  EXPECT_EQ(lines[4], "DidChange=7");
  EXPECT_EQ(lines[5], "EndEditing=7");
}

}  // namespace
}  // namespace tavril
