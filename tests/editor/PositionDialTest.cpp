#include "protocol/Function.h"
#include "tests/editor/EditorBench.h"

#include <cmath>

namespace tavril {
namespace {

class PositionDialTest : public EditorBench {
 protected:
  PositionDialTest() { fakes.log.clear(); }

  void drag(double x, double y) { controller.mouseDragged({x, y}); }
  void press(double x, double y) { controller.mouseDown({x, y}); }
  void expectKnobAt(double x, double y) {
    EXPECT_NEAR(view.knob.x, x, 0.0001);
    EXPECT_NEAR(view.knob.y, y, 0.0001);
    EXPECT_EQ(view.knob.width, 22);
    EXPECT_EQ(view.knob.height, 22);
  }
  void expectUntouched() {
    EXPECT_EQ(view.knobMoves, 0);
    EXPECT_EQ(view["angle"].text(), "");
    EXPECT_EQ(view["TXcmd"].text(), "");
    EXPECT_EQ(view["RXcmd"].text(), "");
    EXPECT_TRUE(sender.sent.empty());
  }
};

TEST_F(PositionDialTest, APressAtExactlyTheCentresXGivesPosition0AndSendsIt) {
  state.CanUseTavril = "true";
  for (const double y : {539.0, 600.0, 480.0}) {
    view["angle"].setText("777");
    sender.sent.clear();
    press(817, y);
    EXPECT_EQ(view["angle"].text(), "0") << y;
    expectKnobAt(806 + 33, 528 - 57.15768);
    EXPECT_EQ(sender.sent, frames({"FF06960000FE"})) << y;
  }
  EXPECT_TRUE(fakes.log.lines().contains("a=33.000000,b=-57.157677"));
  EXPECT_TRUE(fakes.log.lines().filter("象限").isEmpty());
  EXPECT_TRUE(fakes.log.lines().filter("calfloat").isEmpty());
}

TEST_F(PositionDialTest, APressOnTheHorizontalGives818ToTheLeftAnd204ToTheRightAndLogsNoQuadrant) {
  state.CanUseTavril = "true";
  press(780, 539);
  EXPECT_EQ(view["angle"].text(), "818");
  expectKnobAt(806 - 66, 528);
  press(850, 539);
  EXPECT_EQ(view["angle"].text(), "204");
  expectKnobAt(806 + 66, 528);
  EXPECT_EQ(sender.sent, frames({"FF06960332FE", "FF069600CCFE"}));
  EXPECT_TRUE(fakes.log.lines().filter("象限").isEmpty());
}

TEST_F(PositionDialTest, WhereRoundingCarriesTheCosinePast1ThePressIsLikeOneAtTheCentresX) {
  state.CanUseTavril = "true";
  press(717.10, 538.97);
  press(907.52, 539.03);
  EXPECT_EQ(view["angle"].text(), "0");
  expectKnobAt(806 + 33, 528 - 57.15768);
  EXPECT_EQ(sender.sent, frames({"FF06960000FE", "FF06960000FE"}));
}

TEST_F(PositionDialTest, TheCornersOfTheSquareAreAcceptedAndTheKnobGoesToItsRim) {
  for (const double x : {718.0, 916.0}) {
    for (const double y : {440.0, 638.0}) {
      press(x, y);
      EXPECT_NEAR(std::hypot(view.knob.x - 806, view.knob.y - 528), 66, 0.0001);
      EXPECT_EQ(state.TextMouseFlag, "");
    }
  }
  EXPECT_EQ(view.knobMoves, 4);
}

TEST_F(PositionDialTest, TheEdgesOfTheSquareAreOutside) {
  for (const auto &[x, y] : {std::pair{717.0, 539.0}, {917.0, 539.0}, {817.0, 439.0}, {817.0, 639.0}}) {
    press(x, y);
    EXPECT_EQ(state.TextMouseFlag, "MouseDown");
    drag(x, y);
  }
  expectUntouched();
}

TEST_F(PositionDialTest, TheLowerLeftGives1023AndTheLowerRight0) {
  press(816, 450);  // a little left of straight down
  EXPECT_EQ(view["angle"].text(), "1023");
  expectKnobAt(806 - 33, 528 - 57.15768);
  press(818, 450);
  EXPECT_EQ(view["angle"].text(), "0");
}

TEST_F(PositionDialTest, APressLogsItsStepsAndShowsTheKnobsCentreInTheLinesOfFrames) {
  press(827, 549);
  EXPECT_EQ(fakes.log.lines(),
            (QStringList{"第一象限", "angel=45.000000", "a=46.669048,b=46.669048", "calfloat=358.049988"}));
  EXPECT_EQ(view["angle"].text(), "358");
  EXPECT_EQ(view["TXcmd"].text(), "863");
  EXPECT_EQ(view["RXcmd"].text(), "585");
}

TEST_F(PositionDialTest, EachQuadrantIsLoggedByItsName) {
  press(827, 549);
  press(807, 549);
  press(807, 529);
  press(827, 529);
  EXPECT_EQ(fakes.log.lines().filter("象限"), (QStringList{"第一象限", "第二象限", "第三象限", "第四象限"}));
}

TEST_F(PositionDialTest, ADragThatLeavesTheSquareStopsTheKnobButKeepsLimitFlagUntilTheRelease) {
  state.CanUseTavril = "true";
  press(780, 539);
  EXPECT_EQ(state.limitFlag, "") << "a press alone does not set it";
  drag(780, 560);
  EXPECT_EQ(state.limitFlag, "MouseIn");
  const DesignRect knob = view.knob;
  const std::size_t sent = sender.sent.size();
  drag(700, 560);
  drag(-5000, 9000);
  EXPECT_EQ(state.limitFlag, "MouseIn");
  EXPECT_EQ(view.knob.x, knob.x);
  EXPECT_EQ(view.knob.y, knob.y);
  EXPECT_EQ(sender.sent.size(), sent);
  controller.mouseUp();
  EXPECT_EQ(state.limitFlag, "");
}

TEST_F(PositionDialTest, EveryDragInTheSquareSendsAlsoAnUnchangedPosition) {
  state.CanUseTavril = "true";
  for (int i = 0; i < 3; ++i) drag(850, 539);
  EXPECT_EQ(sender.sent, frames({"FF069600CCFE", "FF069600CCFE", "FF069600CCFE"}));
}

TEST_F(PositionDialTest, ADragLeavesTextMouseFlagAsItIs) {
  press(100, 100);
  drag(850, 539);
  EXPECT_EQ(state.TextMouseFlag, "MouseDown");
  EXPECT_EQ(view["angle"].text(), "204") << "a drag that began elsewhere turns the dial all the same";
}

TEST_F(PositionDialTest, AReleaseEndsTheDragAndSendsNothing) {
  state.CanUseTavril = "true";
  state.limitFlag = "MouseIn";
  controller.mouseUp();
  EXPECT_EQ(state.limitFlag, "");
  EXPECT_EQ(fakes.log.lines(), QStringList{"MouseUp"});
  expectUntouched();
}

TEST_F(PositionDialTest, APressOutsideTheSquareSendsNothingAndLogsOtherArea) {
  state.CanUseTavril = "true";
  press(500, 300);
  EXPECT_EQ(fakes.log.lines(), QStringList{"Other Area"});
  EXPECT_EQ(state.TextMouseFlag, "MouseDown");
  EXPECT_EQ(state.limitFlag, "");
  expectUntouched();
}

TEST_F(PositionDialTest, APressInTheSquareClearsTextMouseFlag) {
  press(500, 300);
  press(850, 539);
  EXPECT_EQ(state.TextMouseFlag, "");
}

TEST_F(PositionDialTest, WithNoServoFoundTheDialMovesAndTheFieldChangesButNothingIsSent) {
  for (const char *word : {"", "fail", "TRUE"}) {
    state.CanUseTavril = word;
    press(780, 539);
    drag(850, 539);
    EXPECT_EQ(view["angle"].text(), "204");
    expectKnobAt(806 + 66, 528);
  }
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(PositionDialTest, UpdateMotorValuePlacesTheKnobWithoutSendingOrTouchingTheLinesOfFrames) {
  state.CanUseTavril = "true";
  controller.UpdateMotorValue(1024);
  expectUntouched();
  controller.UpdateMotorValue(0);
  expectKnobAt(806 + 33, 528 - 57.15768);
  controller.UpdateMotorValue(1023);
  expectKnobAt(806 - 33, 528 - 57.15768);
  controller.UpdateMotorValue(-10);
  EXPECT_EQ(view["angle"].text(), "-10");
  EXPECT_NEAR(view.knob.x, 806 + 66 * std::cos(297.0674 * M_PI / 180), 0.001);
  EXPECT_EQ(view["TXcmd"].text(), "");
  EXPECT_EQ(view["RXcmd"].text(), "");
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(PositionDialTest, ReadingsPlaceTheKnobRelativeToWhereItStoodWhenTheScreenLoaded) {
  view.knob = {100, 265, 22, 22};
  controller.viewDidLoad();
  press(850, 539);
  expectKnobAt(166, 200);
  EXPECT_EQ(view["TXcmd"].text(), "883") << "these two are counted from the dial's centre";
}

TEST_F(PositionDialTest, DraggingToAPositionReachesExactlyThatOneAndEndsTheDrag) {
  state.CanUseTavril = "true";
  for (int position = 0; position <= 1023; ++position) {
    sender.sent.clear();
    controller.dragTo(position);
    EXPECT_EQ(view["angle"].text(), QString::number(position));
    ASSERT_EQ(sender.sent.size(), 1u);
    const auto high = static_cast<std::uint8_t>(sender.sent[0].at(3));
    const auto low = static_cast<std::uint8_t>(sender.sent[0].at(4));
    EXPECT_EQ(high * 256 + low, position);
    EXPECT_EQ(state.limitFlag, "");
    const DesignRect dragged = view.knob;
    controller.UpdateMotorValue(position);
    EXPECT_NEAR(view.knob.x, dragged.x, 0.001) << position;
    EXPECT_NEAR(view.knob.y, dragged.y, 0.001) << position;
  }
}

TEST_F(PositionDialTest, DraggingToAPositionIsClampedAtTheEnds) {
  controller.dragTo(-1);
  EXPECT_EQ(view["angle"].text(), "0");
  controller.dragTo(5000);
  EXPECT_EQ(view["angle"].text(), "1023");
}

/// Looks at the shared words while a frame is being sent.
class PeepingSender final : public CommandSender {
 public:
  explicit PeepingSender(const SharedState &state) : state_(state) {}
  void SendCMDtoMCU() override { seen.append(state_.limitFlag); }
  QStringList seen;

 private:
  const SharedState &state_;
};

TEST_F(PositionDialTest, LimitFlagIsSetOnlyDuringAStepOfTheKeys) {
  PeepingSender peeping(state);
  controller.setFunctionCMD(std::make_shared<Function>(state, peeping, fakes.desktop));
  state.CanUseTavril = "true";
  controller.dragTo(300);
  EXPECT_EQ(peeping.seen, QStringList{"MouseIn"});
  EXPECT_EQ(state.limitFlag, "");
  EXPECT_EQ(state.TextMouseFlag, "");
}

}  // namespace
}  // namespace tavril
