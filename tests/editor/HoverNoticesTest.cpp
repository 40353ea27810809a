#include "tests/editor/EditorBench.h"

#include <cmath>

namespace tavril {
namespace {

struct ListedRow {
  double base;
  const char *key;
};
constexpr ListedRow listedRows[]{
    {618, "NoticeMsg_sid"},
    {589, "NoticeMsg_ack_policy"},
    {560, "NoticeMsg_alarm_led_policy"},
    {534, "NoticeMsg_torque_policy"},
    {505, "NoticeMsg_max_tempertaure"},
    {476, "NoticeMsg_min_voltage"},
    {447, "NoticeMsg_max_voltage"},
    {419, "NoticeMsg_max_load"},
    {392, "NoticeMsg_kp"},
    {363, "NoticeMsg_ki"},
    {334, "NoticeMsg_kd"},
    {305, "NoticeMsg_over_temperature"},
    {277, "NoticeMsg_over_voltage"},
    {249, "NoticeMsg_over_load"},
    {220, "NoticeMsg_calibration_angle"},
    {192, "NoticeMsg_status_error"},
    {164, "NoticeMsg_status_detail"},
    {136, "NoticeMsg_present_voltage"},
    {107, "NoticeMsg_present_temperature"},
    {79, "NoticeMsg_present_load"},
};

class HoverNoticesTest : public EditorBench {
 protected:
  QString noticeAt(double x, double y) {
    controller.mouseMoved({x, y});
    return view["NoticeMSGview"].text();
  }
  QString shown(const char *key) { return u'[' + QString::fromLatin1(key) + u']'; }
};

TEST_F(HoverNoticesTest, EachRowShowsItsNoticeUpToItsEdgesAndNotOnThem) {
  for (const auto &[base, key] : listedRows) {
    for (const double y : {std::nextafter(base, 1000), base + 12.5, std::nextafter(base + 25, 0)}) {
      noticeAt(500, y > 400 ? 90 : 630);  // another row first
      EXPECT_EQ(noticeAt(500, y), shown(key)) << y;
    }
    for (const double y : {base, base + 25}) {
      const QString before = noticeAt(500, y > 400 ? 90 : 630);
      EXPECT_EQ(noticeAt(500, y), before) << y;
    }
  }
}

TEST_F(HoverNoticesTest, TheRowsReachFrom374To619WithoutTheseEdges) {
  for (const double x : {std::nextafter(374.0, 1000), std::nextafter(619.0, 0)}) {
    noticeAt(500, 90);
    EXPECT_EQ(noticeAt(x, 630), "[NoticeMsg_sid]") << x;
  }
  for (const double x : {374.0, 619.0, 100.0, 817.0}) {
    noticeAt(500, 90);
    EXPECT_EQ(noticeAt(x, 630), "[NoticeMsg_present_load]") << x;
  }
}

TEST_F(HoverNoticesTest, APointBetweenTheBandsLeavesThePreviousNoticeInPlace) {
  EXPECT_EQ(noticeAt(500, 600), "[NoticeMsg_ack_policy]");
  EXPECT_EQ(noticeAt(500, 616), "[NoticeMsg_ack_policy]");
  EXPECT_EQ(noticeAt(500, 20), "[NoticeMsg_ack_policy]");
}

TEST_F(HoverNoticesTest, ANoticeThatSomethingElseReplacedComesBackWithTheNextMove) {
  noticeAt(500, 600);
  view["NoticeMSGview"].setText("something else");
  EXPECT_EQ(noticeAt(20, 20), "[NoticeMsg_ack_policy]");
}

TEST_F(HoverNoticesTest, BeforeTheFirstRowTheNoticeIsEmpty) {
  EXPECT_EQ(noticeAt(20, 20), "");
}

TEST_F(HoverNoticesTest, TheStatusRowsShowTheirListsWhenThereAreAny) {
  EXPECT_EQ(noticeAt(500, 200), "[NoticeMsg_status_error]")
      << "an empty list adds nothing, no line end either";
  EXPECT_EQ(noticeAt(500, 170), "[NoticeMsg_status_detail]");
  state.ErrorMsgShowToMegView["Error"] = KeyedText::words("\n1. too hot");
  state.ErrorMsgShowToMegView["Detail"] = KeyedText::words("\n1. moving");
  EXPECT_EQ(noticeAt(500, 200), "[NoticeMsg_status_error]\n1. too hot\n");
  EXPECT_EQ(noticeAt(500, 170), "[NoticeMsg_status_detail]\n1. moving\n");
  EXPECT_EQ(noticeAt(500, 140), "[NoticeMsg_present_voltage]");
}

TEST_F(HoverNoticesTest, TheNoticeIsWhiteAndOfSize18WhetherOrNotARowMatched) {
  noticeAt(20, 20);
  ASSERT_TRUE(view.textLooks.contains("NoticeMSGview"));
  EXPECT_EQ(view.textLooks.at("NoticeMSGview"), std::pair(18.0, LabelColor::White));
  view.textLooks.clear();
  noticeAt(500, 600);
  EXPECT_EQ(view.textLooks.at("NoticeMSGview"), std::pair(18.0, LabelColor::White));
}

TEST_F(HoverNoticesTest, OutsideTheScreenNothingHappens) {
  noticeAt(500, 600);
  view["NoticeMSGview"].setText("untouched");
  view.textLooks.clear();
  for (const auto &[x, y] :
       {std::pair{0.0, 300.0}, {1024.0, 300.0}, {500.0, 0.0}, {500.0, 768.0}, {-9.0, 9e9}}) {
    EXPECT_EQ(noticeAt(x, y), "untouched");
  }
  EXPECT_TRUE(view.textLooks.empty());
}

TEST_F(HoverNoticesTest, TheTestOfTheNoticeAreaStandsOutsideTheScreenAndThereforeNeverFires) {
  for (int x = -40; x < 1100; x += 4) {
    for (int y = -40; y < 800; y += 4) controller.mouseMoved(QPointF(x, y));
  }
  EXPECT_EQ(state.TextMouseFlag, "");
}

TEST_F(HoverNoticesTest, TheFieldThatGetsTheFocusShowsItsNoticeUntilTheNextRow) {
  for (const auto &[base, key] : listedRows) {
    view.textLooks.clear();
    controller.focusCame(QString::fromLatin1(key));
    EXPECT_EQ(view["NoticeMSGview"].text(), shown(key));
    EXPECT_EQ(view.textLooks.at("NoticeMSGview"), std::pair(18.0, LabelColor::White));
    EXPECT_EQ(noticeAt(20, 20), shown(key)) << "a pointer that is over no row changes nothing";
  }
  EXPECT_EQ(noticeAt(500, 600), "[NoticeMsg_ack_policy]");
  controller.focusCame(u"NoticeMsg_nothing");
  EXPECT_EQ(noticeAt(20, 20), "[NoticeMsg_ack_policy]");
}

TEST_F(HoverNoticesTest, TheFocusShowsTheStatusListsAsThePointerDoes) {
  state.ErrorMsgShowToMegView["Error"] = KeyedText::words("\n1. too hot");
  controller.focusCame(u"NoticeMsg_status_error");
  EXPECT_EQ(view["NoticeMSGview"].text(), "[NoticeMsg_status_error]\n1. too hot\n");
}

TEST_F(HoverNoticesTest, HoveringTheDialDoesNotTurnIt) {
  state.CanUseTavril = "true";
  noticeAt(850, 539);
  EXPECT_EQ(view.knobMoves, 0);
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_EQ(state.limitFlag, "");
}

}  // namespace
}  // namespace tavril
