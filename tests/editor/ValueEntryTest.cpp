#include "tests/editor/EditorBench.h"

namespace tavril {
namespace {

class ValueEntryTest : public EditorBench {
 protected:
  /// Commits the text in the field; true when it was accepted without an alert.
  bool commit(const char *field, const QString &text) {
    fakes.alert.contents.clear();
    view[field].setText(text);
    controller.text(view[field]);
    return fakes.alert.contents.empty();
  }
  QString alertBody() const {
    return fakes.alert.contents.size() == 1 ? fakes.alert.contents[0].informativeText : "no single alert";
  }
};

TEST_F(ValueEntryTest, Accepts253AsIdAndPutsBack254ToTheLastValueRead) {
  state.textFieldValue.insert("sID", EntryValue(QStringLiteral("42")));
  EXPECT_TRUE(commit("sID_value", "253"));
  EXPECT_EQ(view["sID_value"].text(), "253");
  EXPECT_FALSE(commit("sID_value", "254"));
  EXPECT_EQ(alertBody(), "[Setting_value_is_out_of_range]0~253");
  EXPECT_EQ(fakes.alert.contents[0].messageText, "[Error]");
  EXPECT_EQ(fakes.alert.contents[0].buttons, QStringList{"[Confirm]"});
  EXPECT_EQ(view["sID_value"].text(), "42") << "not the 253 accepted before";
}

TEST_F(ValueEntryTest, EveryRangeHoldsAtItsBounds) {
  struct Bounds {
    const char *field;
    int minimum;
    int maximum;
  };
  for (const Bounds &row :
       {Bounds{"sID_value", 0, 253}, Bounds{"MaxTemp_value", 0, 253}, Bounds{"MinVolt_value", 0, 253},
        Bounds{"MaxVolt_value", 0, 253}, Bounds{"MaxLoad_value", 0, 512}, Bounds{"Kp_value", 0, 32766},
        Bounds{"Ki_value", 0, 32766}, Bounds{"Kd_value", 0, 32766}, Bounds{"OverTemp_value", 0, 255},
        Bounds{"OverVolt_value", 0, 255}, Bounds{"OverLoad_value", 0, 255},
        Bounds{"CalibrationAngle_value", -20, 20}}) {
    EXPECT_TRUE(commit(row.field, QString::number(row.minimum))) << row.field;
    EXPECT_TRUE(commit(row.field, QString::number(row.maximum))) << row.field;
    EXPECT_FALSE(commit(row.field, QString::number(row.maximum + 1))) << row.field;
    EXPECT_EQ(alertBody(),
              QStringLiteral("[Setting_value_is_out_of_range]%1~%2").arg(row.minimum).arg(row.maximum));
    EXPECT_FALSE(commit(row.field, QString::number(row.minimum - 1))) << row.field;
  }
}

TEST_F(ValueEntryTest, MinusTwentyAndTwentyAreAnglesAndMinus21IsNot) {
  EXPECT_TRUE(commit("CalibrationAngle_value", "-20"));
  EXPECT_TRUE(commit("CalibrationAngle_value", "20"));
  EXPECT_FALSE(commit("CalibrationAngle_value", "-21"));
  EXPECT_EQ(alertBody(), "[Setting_value_is_out_of_range]-20~20");
}

TEST_F(ValueEntryTest, MinusSignsAnywhereInTheAngleAreAccepted) {
  for (const char *text : {"5-", "-", "--5", "1-2", "--"}) {
    EXPECT_TRUE(commit("CalibrationAngle_value", text)) << text;
    EXPECT_EQ(view["CalibrationAngle_value"].text(), text);
  }
}

TEST_F(ValueEntryTest, TwelveAInKpIsRejectedWithItsRange) {
  fakes.log.clear();
  EXPECT_FALSE(commit("Kp_value", "12a"));
  EXPECT_EQ(alertBody(), "[Setting_value_is_out_of_range]0~32766");
  EXPECT_EQ(fakes.log.lines(), (QStringList{"text.tag=kp", "a"}));
}

TEST_F(ValueEntryTest, MinusFiveInMaximumLoadIsRejected) {
  EXPECT_FALSE(commit("MaxLoad_value", "-5"));
}

TEST_F(ValueEntryTest, AMinusSignIsRejectedWhereverNoneIsAllowed) {
  // Behind the number, where its value would be in the range.
  for (const char *field :
       {"sID_value", "MaxTemp_value", "MinVolt_value", "MaxVolt_value", "MaxLoad_value", "Kp_value",
        "Ki_value", "Kd_value", "OverTemp_value", "OverVolt_value", "OverLoad_value"}) {
    EXPECT_FALSE(commit(field, "5-")) << field;
    EXPECT_FALSE(commit(field, "-")) << field;
  }
}

TEST_F(ValueEntryTest, AnEmptyFieldIsAcceptedAndWrittenAsZero) {
  EXPECT_TRUE(commit("Kp_value", ""));
  controller.FunctionCMD()->WriteMotorParameter(9);
  EXPECT_EQ(sender.sent, frames({"FF0792090000FE"}));
}

TEST_F(ValueEntryTest, AnElevenDigitEntrySaturatesAndIsRejected) {
  EXPECT_FALSE(commit("Kd_value", "99999999999"));
}

TEST_F(ValueEntryTest, BlanksAndOtherDigitsAreNotAllowed) {
  EXPECT_FALSE(commit("Kp_value", " 5"));
  EXPECT_FALSE(commit("Kp_value", "+5"));
  EXPECT_FALSE(commit("Kp_value", QStringLiteral("\u0665")));
}

TEST_F(ValueEntryTest, BeforeTheFirstReadARejectedEntryIsPutBackFromTheSeed) {
  EXPECT_FALSE(commit("Kp_value", "abc"));
  EXPECT_EQ(view["Kp_value"].text(), "abc") << "the seed is the field itself, as it stands";
}

TEST_F(ValueEntryTest, TheChoiceFieldsAreNotChecked) {
  for (const char *field : {"ACK_value", "AlarmLED_value", "Torque_value"}) {
    EXPECT_TRUE(commit(field, "anything")) << field;
    EXPECT_EQ(view[field].text(), "anything");
  }
}

TEST_F(ValueEntryTest, NothingIsSentByCommitting) {
  commit("sID_value", "1");
  commit("sID_value", "999");
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(ValueEntryTest, TheCheckSaysConditionErrorOrNothing) {
  ValueEntry entry(state, fakes.desktop);
  EXPECT_EQ(entry.checkValue("5", 0, 10, ""), "");
  EXPECT_EQ(entry.checkValue("11", 0, 10, ""), "condition error");
  EXPECT_EQ(entry.checkValue("-5", -10, 10, ""), "condition error");
  EXPECT_EQ(entry.checkValue("-5", -10, 10, "true"), "");
}

}  // namespace
}  // namespace tavril
