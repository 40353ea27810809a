#include "cli/FrameWords.h"
#include "cli/Replies.h"
#include "platform/Bytes.h"

#include <gtest/gtest.h>

namespace tavril::cli {
namespace {

using wire::Command;
using wire::CommandCode;

QByteArray bytes(const char *hex) {
  return QByteArray::fromHex(hex);
}

wire::Reply reply(const char *hex) {
  return *wire::replyAt(asBytes(bytes(hex)));
}

QByteArray found(const Command &command, const char *hex) {
  return toByteArray(scanForReply(command, bytes(hex)).reply.frame).toHex(' ').toUpper();
}

TEST(Replies, TakesOneWholeReplyToTheCommandSent) {
  EXPECT_EQ(found(Command::readRegister(8), "FF079108012CFE"), "FF 07 91 08 01 2C FE");
  EXPECT_EQ(found(Command::detect(), "FF059001FE"), "FF 05 90 01 FE");
  EXPECT_EQ(found(Command::readPosition(), "FF069703FFFE"), "FF 06 97 03 FF FE");
}

TEST(Replies, WaitsForTheLastByte) {
  const QByteArray whole = bytes("FF079108012CFE");
  for (qsizetype length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(scanForReply(Command::readRegister(8), whole.first(length)).found()) << length;
  }
}

TEST(Replies, SkipsNoiseAndTellsOfIt) {
  const ReplyScan scan = scanForReply(Command::readRegister(8), bytes("00FFFF0591FF079108012CFE"));
  EXPECT_EQ(toByteArray(scan.reply.frame), bytes("FF079108012CFE"));
  EXPECT_EQ(scan.noise, bytes("00FFFF0591"));
}

TEST(Replies, SkipsRepliesToOtherCommands) {
  const ReplyScan scan =
      scanForReply(Command::readRegister(8), bytes("FF079107000AFE FF059001FE FF059208FE FF079108012CFE"));
  EXPECT_EQ(toByteArray(scan.reply.frame), bytes("FF079108012CFE"));
  EXPECT_EQ(scan.foreign.size(), 3U);
  EXPECT_TRUE(scan.noise.isEmpty());
}

TEST(Replies, TakesTheRegisterAtItsWord) {
  EXPECT_EQ(found(Command::readRegister(8), "FF079109012CFE"), "");
  EXPECT_EQ(found(Command::writeRegister(8, 300), "FF059209FE"), "");
  EXPECT_EQ(found(Command::writeRegister(8, 300), "FF059208FE"), "FF 05 92 08 FE");
}

TEST(Replies, TakesNoReplyOfAnotherLengthThanItsCodeHas) {
  EXPECT_EQ(found(Command::readRegister(8), "FF0691082CFE"), "");
  EXPECT_EQ(found(Command::readRegister(8), "FF089108012C00FE"), "");
  EXPECT_EQ(found(Command::readRegister(8), "FF0491FE"), "");
  EXPECT_EQ(found(Command::detect(), "FF0490FE"), "");
}

TEST(Replies, TakesNoReplyWithoutItsMarks) {
  EXPECT_EQ(found(Command::readRegister(8), "FE079108012CFE"), "");
  EXPECT_EQ(found(Command::readRegister(8), "FF079108012CFD"), "");
}

TEST(Replies, TakesNoDataThatTheProtocolDoesNotHave) {
  EXPECT_EQ(found(Command::detect(), "FF059003FE"), "");
  EXPECT_EQ(found(Command::readPosition(), "FF06970400FE"), "");
}

TEST(Replies, TakesAReleaseWhateverItCarries) {
  const Command release{CommandCode::ReleaseServo};
  EXPECT_EQ(found(release, "FF0493FE"), "FF 04 93 FE");
  EXPECT_EQ(found(release, "FF05930AFE"), "FF 05 93 0A FE");
}

TEST(Replies, PrefersTheAnswerToAnErrorReport) {
  const ReplyScan alone = scanForReply(Command::readRegister(8), bytes("FF05F904FE"));
  EXPECT_TRUE(alone.isErrorReport);
  EXPECT_EQ(toByteArray(alone.reply.frame), bytes("FF05F904FE"));
  const ReplyScan both = scanForReply(Command::readRegister(8), bytes("FF05F904FEFF079108012CFE"));
  EXPECT_FALSE(both.isErrorReport);
  EXPECT_EQ(toByteArray(both.reply.frame), bytes("FF079108012CFE"));
}

TEST(Replies, FindsNothingInTheTailOfAReplyThatBeginsBeforeTheCommand) {
  EXPECT_EQ(found(Command::readRegister(8), "FFF6FE FF079108012CFE"), "FF 07 91 08 01 2C FE");
  EXPECT_EQ(found(Command::readRegister(8), "08012CFE"), "");
}

TEST(Replies, FindsNoAnswerInTheWrongPlaceBehindAnyPieceOfAnother) {
  const QByteArray other = bytes("FF079108FF07FE");
  const QByteArray own = bytes("FF079108012CFE");
  for (qsizetype length = 0; length < other.size(); ++length) {
    EXPECT_EQ(toByteArray(scanForReply(Command::readRegister(8), other.first(length) + own).reply.frame), own)
        << length;
  }
}

TEST(FrameWords, SayWhatFramesMean) {
  EXPECT_EQ(commandInWords(Command::writeRegister(15, -10)).toStdString(), "write -10 to calibration_angle");
  EXPECT_EQ(commandInWords(Command::setPosition(1000)).toStdString(), "go to position 1000");
  EXPECT_EQ(replyInWords(reply("FF07910FFFF6FE")).toStdString(), "calibration_angle is -10");
  EXPECT_EQ(replyInWords(reply("FF059002FE")).toStdString(), "several servos");
  EXPECT_EQ(replyInWords(reply("FF05F903FE")).toStdString(), "value out of range (error 3)");
  EXPECT_EQ(replyInWords(reply("FF05F963FE")).toStdString(), "unknown error 99");
}

TEST(FrameWords, AreThereForEveryCommandAndEveryReply) {
  struct Words {
    CommandCode code;
    const char *command;
    const char *reply;
  };
  for (const Words &words :
       {Words{CommandCode::InitServo, "detect the servo", "no servo"},
        {CommandCode::ReleaseServo, "release the servo", "released"},
        {CommandCode::RebootServo, "reboot", "rebooted"},
        {CommandCode::ResetServo, "restore the factory settings", "factory settings restored"},
        {CommandCode::ReadServoPosition, "read the position", "position is 0"},
        {CommandCode::ErrorMessage, "report of error 0", "unknown command (error 0)"}}) {
    EXPECT_EQ(commandInWords({words.code}).toStdString(), words.command);
    const wire::Reply answer{{0xFF, 0x06, static_cast<std::uint8_t>(words.code), 0x00, 0x00, 0xFE}};
    EXPECT_EQ(replyInWords(answer).toStdString(), words.reply);
  }
}

TEST(FrameWords, SayWhatEveryErrorMeans) {
  const char *const meanings[]{"unknown command (error 0)", "the command came too slowly (error 1)",
                               "wrong frame length (error 2)", "value out of range (error 3)",
                               "the bridge has lost the servo (error 4)"};
  for (int error = 0; error < 5; ++error) EXPECT_EQ(errorInWords(error).toStdString(), meanings[error]);
}

}  // namespace
}  // namespace tavril::cli
