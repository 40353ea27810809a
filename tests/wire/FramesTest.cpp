#include "wire/Frames.h"

#include <gtest/gtest.h>

#include <numeric>

namespace tavril::wire {
namespace {

using Data = std::vector<std::uint8_t>;

Data encoded(const Command &command) {
  const CommandBuffer buffer = encode(command);
  const Bytes frame = frameIn(buffer);
  EXPECT_EQ(std::accumulate(buffer.begin() + frame.size(), buffer.end(), 0), 0) << "zeros follow the frame";
  return {frame.begin(), frame.end()};
}

FoundFrame::Kind kindOf(const Data &bytes, Lengths lengths = anyLength) {
  return frameAt(bytes, lengths).kind;
}

CommandProblem problemOf(const Data &bytes) {
  return std::get<CommandProblem>(commandFrom(bytes));
}

TEST(Commands, AreBuiltByteByByte) {
  EXPECT_EQ(encoded(Command::detect()), (Data{0xFF, 0x04, 0x90, 0xFE}));
  EXPECT_EQ(encoded(Command::readRegister(8)), (Data{0xFF, 0x05, 0x91, 0x08, 0xFE}));
  EXPECT_EQ(encoded(Command::writeRegister(8, 300)), (Data{0xFF, 0x07, 0x92, 0x08, 0x01, 0x2C, 0xFE}));
  EXPECT_EQ(encoded({CommandCode::ReleaseServo}), (Data{0xFF, 0x04, 0x93, 0xFE}));
  EXPECT_EQ(encoded({CommandCode::RebootServo}), (Data{0xFF, 0x04, 0x94, 0xFE}));
  EXPECT_EQ(encoded({CommandCode::ResetServo}), (Data{0xFF, 0x04, 0x95, 0xFE}));
  EXPECT_EQ(encoded(Command::setPosition(1023)), (Data{0xFF, 0x06, 0x96, 0x03, 0xFF, 0xFE}));
  EXPECT_EQ(encoded(Command::readPosition()), (Data{0xFF, 0x04, 0x97, 0xFE}));
  EXPECT_EQ(encoded(Command::reportError(3)), (Data{0xFF, 0x05, 0xF9, 0x03, 0xFE}));
}

TEST(Commands, SignExtendTheCalibrationAngleAlone) {
  EXPECT_EQ(encoded(Command::writeRegister(15, -10)), (Data{0xFF, 0x07, 0x92, 0x0F, 0xFF, 0xF6, 0xFE}));
  EXPECT_EQ(encoded(Command::writeRegister(15, 20)), (Data{0xFF, 0x07, 0x92, 0x0F, 0x00, 0x14, 0xFE}));
  EXPECT_EQ(encoded(Command::writeRegister(15, 300)), (Data{0xFF, 0x07, 0x92, 0x0F, 0x00, 0x2C, 0xFE}));
  EXPECT_EQ(encoded(Command::writeRegister(5, -1)), (Data{0xFF, 0x07, 0x92, 0x05, 0x00, 0xFF, 0xFE}));
  EXPECT_EQ(encoded(Command::writeRegister(99, 300)), (Data{0xFF, 0x07, 0x92, 0x63, 0x01, 0x2C, 0xFE}));
}

TEST(Commands, SayWhatTheyName) {
  EXPECT_EQ(Command::readRegister(8).registerNumber(), 8);
  EXPECT_EQ(Command::writeRegister(9, 300).registerNumber(), 9);
  EXPECT_EQ(Command::writeRegister(9, 300).word(), 300);
  EXPECT_EQ(Command::writeRegister(15, -10).word(), 0xFFF6);
  EXPECT_EQ(Command::setPosition(1000).registerNumber(), 0);
  EXPECT_EQ(Command::setPosition(1000).word(), 1000);
  EXPECT_EQ(Command::readRegister(8).word(), 0);
}

TEST(Commands, AreReadFromTheirFrames) {
  const auto command = commandFrom(Data{0xFF, 0x07, 0x92, 0x08, 0x01, 0x2C, 0xFE});
  EXPECT_EQ(std::get<Command>(command), Command::writeRegister(8, 300));
  EXPECT_EQ(std::get<Command>(commandFrom(Data{0xFF, 0x04, 0x97, 0xFE})), Command::readPosition());
}

TEST(Commands, AreNotReadFromOtherBytes) {
  EXPECT_EQ(problemOf({}), CommandProblem::TooShort);
  EXPECT_EQ(problemOf({0xFF, 0x03, 0xFE}), CommandProblem::TooShort);
  EXPECT_EQ(problemOf({0xFE, 0x04, 0x90, 0xFE}), CommandProblem::StartMark);
  EXPECT_EQ(problemOf({0xFF, 0x04, 0x90, 0xFF}), CommandProblem::EndMark);
  EXPECT_EQ(problemOf({0xFF, 0x05, 0x90, 0xFE}), CommandProblem::LengthByte);
  EXPECT_EQ(problemOf({0xFF, 0x04, 0x98, 0xFE}), CommandProblem::Code);
  EXPECT_EQ(problemOf({0xFF, 0x05, 0x90, 0x01, 0xFE}), CommandProblem::LengthOfCode);
}

TEST(FrameAt, TellsMarksAndLengthAlone) {
  using Kind = FoundFrame::Kind;
  EXPECT_EQ(kindOf({}), Kind::None);
  EXPECT_EQ(kindOf({0xFF}), Kind::Beginning);
  EXPECT_EQ(kindOf({0xFE}), Kind::None);
  EXPECT_EQ(kindOf({0xFF, 0x05, 0x01}), Kind::Beginning);
  EXPECT_EQ(kindOf({0xFF, 0x05, 0x01, 0x02, 0x03}), Kind::None);
  EXPECT_EQ(kindOf({0xFF, 0x00, 0xFE}), Kind::None);
  EXPECT_EQ(kindOf({0xFF, 0x01, 0xFE}), Kind::None);
  EXPECT_EQ(kindOf({0xFF, 0x02, 0xFE}), Kind::None);
  EXPECT_EQ(frameAt(Data{0xFF, 0x03, 0xFE}).length, 3u);
  EXPECT_EQ(frameAt(Data{0xFF, 0x05, 0x01, 0x02, 0xFE, 0xFF}).length, 5u);
}

TEST(FrameAt, TakesNoOtherLengthsThanAreAskedFor) {
  using Kind = FoundFrame::Kind;
  EXPECT_EQ(kindOf({0xFF, 0x03}, replyLengths), Kind::None);
  EXPECT_EQ(kindOf({0xFF, 0x04}, replyLengths), Kind::Beginning);
  EXPECT_EQ(kindOf({0xFF, 0x07}, replyLengths), Kind::Beginning);
  EXPECT_EQ(kindOf({0xFF, 0x08}, replyLengths), Kind::None);
}

TEST(Frames, AreWholeFromMarkToMark) {
  EXPECT_TRUE(isFrame(Data{0xFF, 0x03, 0xFE}));
  EXPECT_TRUE(isFrame(Data{0xFF, 0x08, 1, 2, 3, 4, 5, 0xFE}));
  EXPECT_FALSE(isFrame(Data{0xFF, 0xFE}));
  EXPECT_FALSE(isFrame(Data{0xFF, 0x03, 0xFE, 0x00}));
  EXPECT_FALSE(isFrame(Data{0xFF, 0x04, 0xFE}));
}

TEST(Frames, HaveTheirCodeInTheThirdByte) {
  EXPECT_EQ(codeIn(Data{0x00, 0x00, 0x90, 0x00}), CommandCode::InitServo);
  EXPECT_EQ(codeIn(Data{0xFF, 0x03, 0x90}), std::nullopt);
}

TEST(ReplyAt, ReadsEachReply) {
  const auto value = replyAt(Data{0xFF, 0x07, 0x91, 0x08, 0x01, 0x2C, 0xFE});
  ASSERT_TRUE(value);
  EXPECT_EQ(value->code(), CommandCode::ReadServoSettingValue);
  EXPECT_EQ(value->registerNumber(), 8);
  EXPECT_EQ(value->value(), 300);
  EXPECT_EQ(replyAt(Data{0xFF, 0x07, 0x91, 0x0F, 0xFF, 0xF6, 0xFE})->value(), -10);
  EXPECT_EQ(replyAt(Data{0xFF, 0x05, 0x90, 0x02, 0xFE})->servos(), 2);
  EXPECT_EQ(replyAt(Data{0xFF, 0x05, 0x92, 0x0F, 0xFE})->registerNumber(), 15);
  EXPECT_EQ(replyAt(Data{0xFF, 0x06, 0x97, 0x03, 0xFF, 0xFE})->position(), 1023);
  EXPECT_EQ(replyAt(Data{0xFF, 0x05, 0xF9, 0x04, 0xFE})->error(), 4);
}

TEST(ReplyAt, LeavesWhatFollows) {
  const Data reply{0xFF, 0x05, 0x90, 0x01, 0xFE};
  EXPECT_EQ(replyAt(Data{0xFF, 0x05, 0x90, 0x01, 0xFE, 0xFF, 0x00})->frame, reply);
}

TEST(ReplyAt, TakesNoOtherLengthThanTheCodeHas) {
  EXPECT_FALSE(replyAt(Data{0xFF, 0x06, 0x91, 0x08, 0x2C, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x08, 0x91, 0x08, 0x01, 0x2C, 0x00, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x04, 0x90, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x03, 0xFE}));
}

TEST(ReplyAt, TakesNoOtherCodeAndNoOtherMarks) {
  EXPECT_FALSE(replyAt(Data{0xFF, 0x05, 0x98, 0x01, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFE, 0x05, 0x90, 0x01, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x05, 0x90, 0x01, 0xFD}));
}

TEST(ReplyAt, TakesNoDataThatTheProtocolDoesNotHave) {
  EXPECT_FALSE(replyAt(Data{0xFF, 0x05, 0x90, 0x03, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x07, 0x91, 0x00, 0x00, 0x01, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x07, 0x91, 0x15, 0x00, 0x01, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x05, 0x92, 0x10, 0xFE}));
  EXPECT_FALSE(replyAt(Data{0xFF, 0x06, 0x97, 0x04, 0x00, 0xFE}));
}

TEST(ReplyAt, TakesAReleaseWhateverItCarries) {
  EXPECT_TRUE(replyAt(Data{0xFF, 0x04, 0x93, 0xFE}));
  EXPECT_TRUE(replyAt(Data{0xFF, 0x08, 0x93, 0x01, 0x02, 0x03, 0x04, 0xFE}));
}

TEST(Replies, AnswerTheCommandOfTheirCodeAndRegister) {
  const Reply reply{{0xFF, 0x07, 0x91, 0x08, 0x01, 0x2C, 0xFE}};
  EXPECT_TRUE(reply.answers(Command::readRegister(8)));
  EXPECT_FALSE(reply.answers(Command::readRegister(9)));
  EXPECT_FALSE(reply.answers(Command::writeRegister(8, 300)));
  const Reply position{{0xFF, 0x06, 0x97, 0x03, 0xFF, 0xFE}};
  EXPECT_TRUE(position.answers(Command::readPosition()));
}

TEST(Beginnings, AreThoseThatAReplyCanHave) {
  for (std::size_t size = 1; size < 7; ++size) {
    const Data reply{0xFF, 0x07, 0x91, 0x08, 0x01, 0x2C, 0xFE};
    EXPECT_TRUE(mayBeginReply(Bytes(reply).first(size))) << size;
  }
  EXPECT_FALSE(mayBeginReply(Data{0xFF, 0x08}));
  EXPECT_FALSE(mayBeginReply(Data{0xFF, 0x06, 0x91}));
  EXPECT_FALSE(mayBeginReply(Data{0xFF, 0x05, 0x98}));
  EXPECT_FALSE(mayBeginReply(Data{0xFE}));
  EXPECT_FALSE(mayBeginReply(Data{0xFF, 0x04, 0x94, 0xFE}));
}

}  // namespace
}  // namespace tavril::wire
