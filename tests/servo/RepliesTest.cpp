#include "platform/Bytes.h"
#include "servo/Replies.h"

#include <gtest/gtest.h>

namespace tavril::servo {
namespace {

using wire::Command;
using wire::CommandCode;

QByteArray bytes(const char *hex) {
  return QByteArray::fromHex(hex);
}

ReplyScan scan(const Command &command, const QByteArray &received) {
  return scanForReply(command, asBytes(received));
}

QByteArray found(const Command &command, const char *hex) {
  return toByteArray(scan(command, bytes(hex)).reply.frame).toHex(' ').toUpper();
}

TEST(Replies, TakesOneWholeReplyToTheCommandSent) {
  EXPECT_EQ(found(Command::readRegister(8), "FF079108012CFE"), "FF 07 91 08 01 2C FE");
  EXPECT_EQ(found(Command::detect(), "FF059001FE"), "FF 05 90 01 FE");
  EXPECT_EQ(found(Command::readPosition(), "FF069703FFFE"), "FF 06 97 03 FF FE");
}

TEST(Replies, WaitsForTheLastByte) {
  const QByteArray whole = bytes("FF079108012CFE");
  for (qsizetype length = 0; length < whole.size(); ++length) {
    EXPECT_FALSE(scan(Command::readRegister(8), whole.first(length)).found()) << length;
  }
}

TEST(Replies, SkipsNoiseAndTellsOfIt) {
  const ReplyScan found = scan(Command::readRegister(8), bytes("00FFFF0591FF079108012CFE"));
  EXPECT_EQ(toByteArray(found.reply.frame), bytes("FF079108012CFE"));
  EXPECT_EQ(toByteArray(found.noise), bytes("00FFFF0591"));
}

TEST(Replies, SkipsRepliesToOtherCommands) {
  const ReplyScan found =
      scan(Command::readRegister(8), bytes("FF079107000AFE FF059001FE FF059208FE FF079108012CFE"));
  EXPECT_EQ(toByteArray(found.reply.frame), bytes("FF079108012CFE"));
  EXPECT_EQ(found.foreign.size(), 3U);
  EXPECT_TRUE(found.noise.empty());
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
  const ReplyScan alone = scan(Command::readRegister(8), bytes("FF05F904FE"));
  EXPECT_TRUE(alone.isErrorReport);
  EXPECT_EQ(toByteArray(alone.reply.frame), bytes("FF05F904FE"));
  const ReplyScan both = scan(Command::readRegister(8), bytes("FF05F904FEFF079108012CFE"));
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
    EXPECT_EQ(toByteArray(scan(Command::readRegister(8), other.first(length) + own).reply.frame), own)
        << length;
  }
}

}  // namespace
}  // namespace tavril::servo
