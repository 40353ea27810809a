#include "platform/NamedDevice.h"
#include "protocol/RegisterCatalogue.h"
#include "tests/protocol/FunctionFixture.h"

namespace tavril {
namespace {

const QString separator = QStringLiteral("\n---------------------------------------------\n");

class ChosenPort final : public NamedDevice {
 public:
  QString name() const override { return QStringLiteral("usbserial-ttyUSB0"); }
};

class FunctionReply : public FunctionFixture {
 protected:
  QString decode(const char *bytes) {
    return function.returnErrorCode(QString::fromLatin1(bytes).split(u' '));
  }
  QString readReply(int registerNumber, int high, int low) {
    return function.returnErrorCode(
        QStringLiteral("255 7 145 %1 %2 %3 254").arg(registerNumber).arg(high).arg(low).split(u' '));
  }
  std::vector<QByteArray> takeSent() { return std::exchange(sender.sent, {}); }
  static std::map<QString, QString> textsOf(const std::map<QString, PlainElement> &elements) {
    std::map<QString, QString> texts;
    for (const auto &[key, element] : elements) texts[key] = element.text();
    return texts;
  }
  QString list(const char *key) {
    return state.ErrorMsgShowToMegView.value(QString::fromLatin1(key)).in(fakes.strings);
  }
};

// --------------------------------------------------------------------------------------------- detection

TEST_F(FunctionReply, NoServoRaisesTheAlertAndFails) {
  elements.at("ContrainerView_WaitView").setHidden(false);
  EXPECT_EQ(decode("255 5 144 0 254"), "[no_servo]");
  ASSERT_EQ(fakes.alert.contents.size(), 1u);
  EXPECT_EQ(fakes.alert.contents[0].messageText, "[Error]");
  EXPECT_EQ(fakes.alert.contents[0].informativeText, "[no_servo]");
  EXPECT_EQ(fakes.alert.contents[0].buttons, QStringList{"OK"});
  EXPECT_EQ(state.CanUseTavril, "fail");
  EXPECT_EQ(state.ToolbarFlag, "MotorInitFail");
  EXPECT_EQ(textOf("errormsg"), "[no_servo]");
  EXPECT_EQ(textOf("ConnectStatus"), "[COM_Connect_P1]");
  EXPECT_TRUE(elements.at("ContrainerView_WaitView").isHidden());
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_EQ(fakes.log.lines(), (QStringList{"144", "OK"}));
}

TEST_F(FunctionReply, ADetectionWithoutAResultHasTheEndMarkForOne) {
  elements.at("ContrainerView_WaitView").setHidden(false);
  EXPECT_TRUE(decode("255 4 144 254").isNull());
  EXPECT_EQ(state.CanUseTavril, "");
  EXPECT_EQ(state.ToolbarFlag, "");
  EXPECT_EQ(textOf("ConnectStatus"), "[COM_Connect_P1]");
  EXPECT_TRUE(elements.at("ContrainerView_WaitView").isHidden());
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_EQ(fakes.log.lines(), QStringList{"144"});
}

TEST_F(FunctionReply, TheDecoderGoesByThePlacesAndNotByTheLengthByte) {
  EXPECT_EQ(function.returnErrorCode({"255", "4", "144", "0", "254"}), "[no_servo]");
  EXPECT_EQ(state.CanUseTavril, "fail");
  EXPECT_EQ(state.ToolbarFlag, "MotorInitFail");
}

TEST_F(FunctionReply, TheAlertComesBeforeTheStateChanges) {
  QString duringAlert = "unset";
  fakes.alert.whileUp = [&] { duringAlert = state.CanUseTavril + state.ToolbarFlag + textOf("errormsg"); };
  decode("255 5 144 0 254");
  EXPECT_EQ(duringAlert, "");
}

TEST_F(FunctionReply, OneServoStartsTheReadingSequenceWithAnEmptyMessage) {
  elements.at("errormsg").setText("old");
  elements.at("ContrainerView_WaitView").setHidden(false);
  state.SelectSerial = std::make_shared<ChosenPort>();
  const QString result = decode("255 5 144 1 254");
  EXPECT_TRUE(result.isEmpty());
  EXPECT_FALSE(result.isNull());
  EXPECT_EQ(state.CanUseTavril, "true");
  EXPECT_EQ(state.ToolbarFlag, "MotorInitOK");
  EXPECT_EQ(textOf("errormsg"), "");
  EXPECT_EQ(textOf("ConnectStatus"), "[COM_Connect_P1]usbserial-ttyUSB0");
  EXPECT_TRUE(elements.at("ContrainerView_WaitView").isHidden());
  EXPECT_TRUE(fakes.alert.contents.empty());
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF059101FE")}));
}

TEST_F(FunctionReply, SeveralServosFailWithoutAnAlert) {
  EXPECT_EQ(decode("255 5 144 2 254"), "[there_are_more_than_one_servo]");
  EXPECT_TRUE(fakes.alert.contents.empty());
  EXPECT_EQ(state.CanUseTavril, "fail");
  EXPECT_EQ(state.ToolbarFlag, "MotorInitFail");
  EXPECT_EQ(textOf("errormsg"), "[there_are_more_than_one_servo]");
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(FunctionReply, AnUnknownDetectionResultOnlyUpdatesTheConnectionLineAndThePanel) {
  elements.at("ContrainerView_WaitView").setHidden(false);
  elements.at("errormsg").setText("old");
  EXPECT_TRUE(decode("255 5 144 3 254").isNull());
  EXPECT_EQ(textOf("errormsg"), "old");
  EXPECT_EQ(state.CanUseTavril, "");
  EXPECT_EQ(state.ToolbarFlag, "");
  EXPECT_EQ(textOf("ConnectStatus"), "[COM_Connect_P1]");
  EXPECT_TRUE(elements.at("ContrainerView_WaitView").isHidden());
}

// ---------------------------------------------------------------------------------------------- settings

TEST_F(FunctionReply, Register8ShowsBothBytes) {
  EXPECT_EQ(readReply(8, 1, 44), "Read Servo Setting Value Success");
  EXPECT_EQ(textOf("MaxLoad_value"), "300");
  EXPECT_EQ(state.textFieldValue.value("maxLoad").text(), "300");
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF059109FE")}));
}

TEST_F(FunctionReply, TheHighByteCountsForTheWordRegistersOnly) {
  const std::map<int, const char *> words{{8, "513"}, {9, "513"}, {10, "513"}, {11, "513"}};
  for (int number = 1; number <= 14; ++number) {
    readReply(number, 2, 1);
    const QString shown = elements.at(findRegister(number)->valueKey.toString()).text();
    EXPECT_EQ(shown, words.contains(number) ? "513" : "1") << number;
  }
}

TEST_F(FunctionReply, Register15IsASignedByte) {
  readReply(15, 255, 246);
  EXPECT_EQ(textOf("CalibrationAngle_value"), "-10");
  EXPECT_EQ(state.textFieldValue.value("calibrationAngle").text(), "-10");
  EXPECT_EQ(fakes.log.lines(), QStringList{"80"});
  readReply(15, 0, 20);
  EXPECT_EQ(textOf("CalibrationAngle_value"), "20");
  EXPECT_EQ(state.textFieldValue.value("calibrationAngle").text(), "20");
  EXPECT_EQ(fakes.log.lines(), (QStringList{"80", "0"}));
  readReply(15, 0, 128);
  EXPECT_EQ(textOf("CalibrationAngle_value"), "-128");
  readReply(15, 0, 127);
  EXPECT_EQ(textOf("CalibrationAngle_value"), "127");
}

TEST_F(FunctionReply, TheEntryTextsAreKeptForRegister1And5To15) {
  for (int number = 1; number <= 15; ++number) readReply(number, 0, number);
  EXPECT_EQ(state.textFieldValue.size(), 12);
  for (const RegisterRow &row : settingRegisters()) {
    const bool kept = row.number == 1 || row.number >= 5;
    EXPECT_EQ(kept, !row.entryKey.isEmpty()) << row.number;
    const QString expected = kept ? QString::number(row.number) : QString();
    EXPECT_EQ(state.textFieldValue.value(row.entryKey.toString()).text(), expected);
  }
}

TEST_F(FunctionReply, OneDetectionReadsAllTwentyRegistersInOrder) {
  decode("255 5 144 1 254");
  for (int number = 1; number <= 20; ++number) {
    const QByteArray request =
        QByteArray::fromHex("FF0591") + static_cast<char>(number) + QByteArray::fromHex("FE");
    const auto sent = takeSent();
    ASSERT_EQ(sent.size(), 1u) << "before the reply of register " << number;
    EXPECT_EQ(sent[0].first(5), request);
    readReply(number, 0, 0);
  }
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(FunctionReply, WhileTheDialIsDraggedAReadReplyChangesNothing) {
  elements.at("StatusError_value").setText("old error");
  state.ErrorMsgShowToMegView = {{"Error", KeyedText::words("old list")},
                                 {"Detail", KeyedText::words("old details")}};
  state.ToolbarFlag = "RebootServo";
  state.returnSTR = "512";
  const auto before = textsOf(elements);
  state.limitFlag = "MouseIn";
  for (int number = 1; number <= 21; ++number) {
    EXPECT_TRUE(readReply(number, 255, 255).isNull()) << number;
    EXPECT_EQ(textsOf(elements), before) << number;
  }
  EXPECT_TRUE(decode("255 4 145 254").isNull()) << "not even looked at";
  EXPECT_TRUE(state.textFieldValue.isEmpty());
  EXPECT_EQ(list("Error"), "old list");
  EXPECT_EQ(list("Detail"), "old details");
  EXPECT_EQ(state.ToolbarFlag, "RebootServo");
  EXPECT_EQ(state.returnSTR, "512");
  EXPECT_EQ(state.limitFlag, "MouseIn");
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_TRUE(fakes.alert.contents.empty());
  EXPECT_TRUE(fakes.log.lines().isEmpty());
}

TEST_F(FunctionReply, WhileTheDialIsDraggedTheStatusRegisterThatIsExpectedStaysTheSame) {
  for (int expected = 16; expected <= 20; ++expected) {
    // Whatever comes during the drag, afterwards an unknown register counts as the expected one.
    for (const int during : {15, expected, expected + 1, 99}) {
      state.limitFlag.clear();
      for (int number = 15; number < expected; ++number) readReply(number, 0, 1);
      state.limitFlag = "MouseIn";
      readReply(during, 0, 1);
      state.limitFlag.clear();
      fakes.log.clear();
      readReply(99, 0, 7);
      ASSERT_FALSE(fakes.log.lines().isEmpty()) << expected << ' ' << during;
      const QStringList names{"StatusError", "StatusDetail", "PresentVolt", "PresentTemp", "PresentLoad"};
      EXPECT_EQ(fakes.log.lines().first(), names[expected - 16] + "=(255, 7, 145, 99, 0, 7, 254)") << during;
    }
  }
}

TEST_F(FunctionReply, WhileTheDialIsDraggedNothingComesToBeExpected) {
  state.limitFlag = "MouseIn";
  for (int number = 15; number <= 20; ++number) readReply(number, 0, 1);
  state.limitFlag.clear();
  readReply(99, 0, 5);
  EXPECT_EQ(fakes.log.lines(), (QStringList{"Error=(255, 7, 145, 99, 0, 5, 254)", "Read Error!"}));
}

// ------------------------------------------------------------------------------------------------ status

TEST_F(FunctionReply, StatusErrorWithBit4OnlyIsTheSeparatorAloneAndNoItem) {
  readReply(16, 0, 0x10);
  EXPECT_EQ(list("Error"), separator);
  EXPECT_EQ(textOf("StatusError_value"), "0 Items");
}

TEST_F(FunctionReply, StatusError05ListsItsTwoItems) {
  readReply(16, 0, 0x05);
  EXPECT_EQ(list("Error"), separator + "1. [StatusErrorMsg0]\n2. [StatusErrorMsg2]\n");
  EXPECT_EQ(textOf("StatusError_value"), "2 Items");
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF059111FE")}));
}

TEST_F(FunctionReply, StatusErrorWithAllBitsLeavesBit4Out) {
  readReply(16, 0, 0xFF);
  EXPECT_EQ(list("Error"),
            separator +
                "1. [StatusErrorMsg0]\n2. [StatusErrorMsg1]\n3. [StatusErrorMsg2]\n4. [StatusErrorMsg3]\n"
                "5. [StatusErrorMsg5]\n6. [StatusErrorMsg6]\n7. [StatusErrorMsg7]\n");
  EXPECT_EQ(textOf("StatusError_value"), "7 Items");
}

TEST_F(FunctionReply, ANegativeStatusShowsItsTextAndItem) {
  readReply(16, 0, -1);
  EXPECT_EQ(textOf("StatusError_value"), "-1 Item");
  readReply(17, 0, -1);
  EXPECT_EQ(textOf("StatusDetail_value"), "-1 Item");
}

TEST_F(FunctionReply, StatusErrorIsLoggedBitByBit) {
  readReply(16, 0, 0x81);
  EXPECT_EQ(fakes.log.lines(), (QStringList{"StatusError=(255, 7, 145, 16, 0, 129, 254)", "bit=1,1",
                                            "StrToChar=1", "bit=2,0", "bit=4,0", "bit=8,0", "bit=10,0",
                                            "bit=20,0", "bit=40,0", "bit=80,80", "StrToChar=128"}));
  EXPECT_TRUE(fakes.log.warnings().isEmpty()) << "a trace";
}

TEST_F(FunctionReply, StatusDetail0FIsIgnored) {
  readReply(17, 0, 0x0F);
  EXPECT_EQ(list("Detail"), "");
  EXPECT_EQ(textOf("StatusDetail_value"), "0 Items");
}

TEST_F(FunctionReply, StatusDetailBit6DependsOnTheTorquePolicy) {
  elements.at("Torque_value").setText("0");
  readReply(17, 0, 0x40);
  EXPECT_EQ(list("Detail"), separator + "1. [StatusDetailMsg60]\n");
  for (const char *policy : {"1", "", "00", " 0"}) {
    elements.at("Torque_value").setText(policy);
    readReply(17, 0, 0x40);
    EXPECT_EQ(list("Detail"), separator + "1. [StatusDetailMsg61]\n") << policy;
  }
}

TEST_F(FunctionReply, StatusDetailListsBits4To7) {
  elements.at("Torque_value").setText("1");
  readReply(17, 0, 0xFF);
  EXPECT_EQ(list("Detail"), separator +
                                "1. [StatusDetailMsg4]\n2. [StatusDetailMsg5]\n3. [StatusDetailMsg61]\n"
                                "4. [StatusDetailMsg7]\n");
  EXPECT_EQ(textOf("StatusDetail_value"), "4 Items");
  EXPECT_EQ(fakes.log.lines(),
            (QStringList{"StatusDetail=(255, 7, 145, 17, 0, 255, 254)", "bit=10", "StrToChar=16", "bit=20",
                         "StrToChar=32", "bit=40", "StrToChar=64", "bit=80", "StrToChar=128"}));
}

TEST_F(FunctionReply, LiveValuesAreShownRawAndLogged) {
  readReply(18, 0, 74);
  readReply(19, 0, 31);
  readReply(20, 0, 12);
  EXPECT_EQ(textOf("PresentVolt_value"), "74");
  EXPECT_EQ(textOf("PresentTemp_value"), "31");
  EXPECT_EQ(textOf("PresentLoad_value"), "12");
  EXPECT_EQ(fakes.log.lines(), (QStringList{"PresentVolt=(255, 7, 145, 18, 0, 74, 254)",
                                            "PresentTemp=(255, 7, 145, 19, 0, 31, 254)",
                                            "PresentLoad=(255, 7, 145, 20, 0, 12, 254)"}));
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF059113FE"), transmission("FF059114FE")}));
}

TEST_F(FunctionReply, AnUnknownRegisterWithNothingExpectedIsAReadError) {
  EXPECT_EQ(readReply(99, 0, 5), "Read Servo Setting Value Success");
  EXPECT_EQ(textOf("StatusError_value"), "5");
  EXPECT_EQ(fakes.log.lines(), (QStringList{"Error=(255, 7, 145, 99, 0, 5, 254)", "Read Error!"}));
  EXPECT_EQ(fakes.log.warnings(), fakes.log.lines());
  EXPECT_TRUE(sender.sent.empty());
}

TEST_F(FunctionReply, AStatusReplyIsTakenForTheOneThatIsExpected) {
  readReply(15, 0, 0);  // now register 16 is expected
  takeSent();
  readReply(99, 0, 1);
  EXPECT_EQ(textOf("StatusError_value"), "1 Items");
  EXPECT_EQ(takeSent(), (std::vector<QByteArray>{transmission("FF059111FE")}));
  readReply(18, 0, 0x10);  // 17 is expected, and is compared before 18
  EXPECT_EQ(textOf("StatusDetail_value"), "1 Items");
  EXPECT_EQ(textOf("PresentVolt_value"), "");
}

TEST_F(FunctionReply, TheReadFlagStaysAt20AfterTheLastRegister) {
  for (int number = 15; number <= 20; ++number) readReply(number, 0, 7);
  takeSent();
  readReply(99, 0, 42);
  EXPECT_EQ(textOf("PresentLoad_value"), "42");
  readReply(77, 0, 43);
  EXPECT_EQ(textOf("PresentLoad_value"), "43");
  EXPECT_EQ(textOf("StatusError_value"), "3 Items");
  EXPECT_TRUE(sender.sent.empty());
}

// ------------------------------------------------------------------------------------------ other replies

TEST_F(FunctionReply, TheAcknowledgementOfRegister15RaisesTheSetOkAlert) {
  EXPECT_EQ(decode("255 5 146 15 254"), "Lost Servo Connecting");
  ASSERT_EQ(fakes.alert.contents.size(), 1u);
  EXPECT_EQ(fakes.alert.contents[0].messageText, "[SetOK]");
  EXPECT_EQ(fakes.alert.contents[0].informativeText, "");
  EXPECT_EQ(fakes.alert.contents[0].buttons, QStringList{"OK"});
}

TEST_F(FunctionReply, AnyOtherAcknowledgementSaysLostServoConnectingWithoutAnAlert) {
  for (int number = 1; number <= 14; ++number) {
    EXPECT_EQ(function.returnErrorCode({"255", "5", "146", QString::number(number), "254"}),
              "Lost Servo Connecting");
  }
  EXPECT_TRUE(fakes.alert.contents.empty());
}

TEST_F(FunctionReply, ErrorReportsShowTheirText) {
  const std::map<const char *, const char *> texts{{"255 5 249 0 254", "Packet CMD Error"},
                                                   {"255 5 249 1 254", "Packet Timerout"},
                                                   {"255 5 249 2 254", "Packet Length Error"},
                                                   {"255 5 249 3 254", "Packet Setting Over Range"},
                                                   {"255 5 249 4 254", "Packet Lost Servo Connecting"}};
  for (const auto &[frame, text] : texts) {
    fakes.log.clear();
    EXPECT_EQ(decode(frame), text);
    EXPECT_EQ(textOf("errormsg"), text);
    EXPECT_EQ(fakes.log.lines(), QStringList{text});
    EXPECT_EQ(fakes.log.warnings(), QStringList{text});
  }
}

TEST_F(FunctionReply, ErrorReport9ShowsUnknowErrorMessage) {
  EXPECT_EQ(decode("255 5 249 9 254"), "Unknow Error Message");
  EXPECT_EQ(textOf("errormsg"), "Unknow Error Message");
}

TEST_F(FunctionReply, APositionReplyAsksTheScreenToShowIt) {
  EXPECT_EQ(decode("255 6 151 3 255 254"), "1023");
  EXPECT_EQ(state.ToolbarFlag, "UpdateMotorValue");
  EXPECT_EQ(fakes.log.lines(), QStringList{"1023"});
}

TEST_F(FunctionReply, ThePositionSetReplyDoesNothing) {
  EXPECT_TRUE(decode("255 4 150 254").isNull());
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_EQ(state.ToolbarFlag, "");
}

TEST_F(FunctionReply, RepliesToRebootAndResetRestartTheReadingSequence) {
  EXPECT_TRUE(decode("255 4 148 254").isNull());
  EXPECT_TRUE(decode("255 4 149 254").isNull());
  EXPECT_EQ(sender.sent, (std::vector<QByteArray>{transmission("FF059101FE"), transmission("FF059101FE")}));
}

TEST_F(FunctionReply, AnyOtherCodeIsNullAndChangesNothing) {
  EXPECT_EQ(decode("255 4 147 254"), "Null");
  EXPECT_EQ(decode("255 4 1 254"), "Null");
  EXPECT_EQ(decode("255 5 0145 1 254"), "Null");
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_EQ(state.ToolbarFlag, "");
}

// ------------------------------------------------------------------------------------------- short frames

TEST_F(FunctionReply, AReplyOneByteShortHasTheEndMarkForItsLastByte) {
  EXPECT_EQ(decode("255 6 145 8 1 254"), "Read Servo Setting Value Success");
  EXPECT_EQ(textOf("MaxLoad_value"), "510") << "1 * 256 + 254";
  EXPECT_EQ(state.textFieldValue.value("maxLoad").text(), "510");
  EXPECT_EQ(takeSent(), (std::vector<QByteArray>{transmission("FF059109FE")}));
  decode("255 6 145 5 0 254");
  EXPECT_EQ(textOf("MaxTemp_value"), "254");
  decode("255 6 145 15 0 254");
  EXPECT_EQ(textOf("CalibrationAngle_value"), "-2");
  decode("255 6 145 16 0 254");
  EXPECT_EQ(textOf("StatusError_value"), "6 Items") << "bits 1 to 7 but for 4";
  decode("255 6 145 20 0 254");
  EXPECT_EQ(textOf("StatusDetail_value"), "4 Items") << "17 was expected";

  EXPECT_EQ(decode("255 5 151 3 254"), "1022") << "3 * 256 + 254";
  EXPECT_EQ(state.ToolbarFlag, "UpdateMotorValue");

  EXPECT_EQ(decode("255 4 249 254"), "Unknow Error Message");
  EXPECT_EQ(textOf("errormsg"), "Unknow Error Message");

  EXPECT_EQ(decode("255 4 146 254"), "Lost Servo Connecting");
  EXPECT_TRUE(fakes.alert.contents.empty());
}

TEST_F(FunctionReply, AFrameWithoutThePlacesOfItsCommandChangesNothingAndIsLogged) {
  state.returnSTR = "512";
  const std::vector<const char *> frames{
      "255 3 144",     "255 4 145 254", "255 5 145 1 254", "255 5 145 16 254", "255 5 145 99 254",
      "255 4 151 254", "255 3 146",     "255 3 249",       "255 3 151",        "255 3 145",
  };
  for (const char *frame : frames) {
    fakes.log.clear();
    EXPECT_EQ(decode(frame), "512") << frame;
    QString bytes = QString::fromLatin1(frame);
    bytes.replace(u' ', QStringLiteral(", "));
    EXPECT_EQ(fakes.log.lines(), QStringList{"Reply too short, ignored: (" + bytes + ")"}) << frame;
  }
  for (const auto &[key, element] : elements) EXPECT_EQ(element.text(), "") << key.toStdString();
  EXPECT_TRUE(sender.sent.empty());
  EXPECT_TRUE(fakes.alert.contents.empty());
  EXPECT_TRUE(state.ErrorMsgShowToMegView.isEmpty());
  EXPECT_EQ(state.ToolbarFlag, "");
  EXPECT_EQ(state.CanUseTavril, "");
}

TEST_F(FunctionReply, AnEmptyOrTinyFrameIsNotReadPastItsEnd) {
  EXPECT_EQ(function.returnErrorCode({}), "Null");
  EXPECT_EQ(function.returnErrorCode({"255"}), "Null");
  EXPECT_EQ(function.returnErrorCode({"255", "254"}), "Null");
}

}  // namespace
}  // namespace tavril
