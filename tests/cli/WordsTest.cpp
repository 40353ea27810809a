// What tavrilctl says of frames, of events on the line and of problems.
#include "cli/FrameWords.h"
#include "cli/ProblemWords.h"
#include "platform/Bytes.h"
#include "servo/Conversation.h"
#include "wire/Frames.h"

#include <QByteArray>

#include <gtest/gtest.h>

#include <chrono>

namespace tavril::cli {
namespace {

using servo::Event;
using servo::Problem;
using std::chrono::milliseconds;
using wire::Command;
using wire::CommandCode;

QByteArray bytes(const char *hex) {
  return QByteArray::fromHex(hex);
}

wire::Reply reply(const char *hex) {
  return *wire::replyAt(asBytes(bytes(hex)));
}

std::string said(const Event &event) {
  return eventInWords(event).toStdString();
}

std::string saidOf(const Problem &problem) {
  return failureFrom(problem, QStringLiteral("usbserial-test")).text.toStdString();
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

TEST(EventWords, ShowEachFrameWithItsMeaning) {
  EXPECT_EQ(said({.kind = Event::Kind::Sent, .command = Command::readRegister(9)}),
            "-> FF 05 91 09 FE  read kp");
  EXPECT_EQ(said({.kind = Event::Kind::Replied, .reply = reply("FF07910901B8FE")}),
            "<- FF 07 91 09 01 B8 FE  kp is 440");
  EXPECT_EQ(said({.kind = Event::Kind::Late, .reply = reply("FF07910901B8FE")}),
            "<- FF 07 91 09 01 B8 FE  kp is 440 (late)");
  EXPECT_EQ(said({.kind = Event::Kind::Noise, .bytes = {0x00, 0xFF}}), "<- 00 FF  noise");
  EXPECT_EQ(said({.kind = Event::Kind::Invalid, .bytes = {0x55}}), "<- 55  not a valid reply");
  EXPECT_EQ(said({.kind = Event::Kind::Silence, .timeout = milliseconds(300)}), "   no reply within 300 ms");
}

TEST(ProblemWords, SayWhatToDoWhereThereIsNoAnswer) {
  Problem problem{.kind = Problem::Kind::NoAnswer,
                  .command = Command::readRegister(9),
                  .timeout = milliseconds(300),
                  .tries = 3};
  EXPECT_EQ(failureFrom(problem, {}).code, ExitCode::Failed);
  EXPECT_EQ(
      saidOf(problem).find("no answer from usbserial-test to \"read kp\" within 300 ms, sent 3 times. Check"),
      0U)
      << saidOf(problem);
  problem.tries = 1;
  problem.strayBytes = 1;
  EXPECT_EQ(saidOf(problem).find(
                "no answer from usbserial-test to \"read kp\" within 300 ms, sent once. 1 byte came, none"),
            0U)
      << saidOf(problem);
  EXPECT_NE(saidOf({.kind = Problem::Kind::TooManyUnanswered})
                .find("that late replies cannot be told from new ones. Check the cable"),
            std::string::npos);
}

TEST(ProblemWords, PassAnErrorReportOn) {
  EXPECT_EQ(saidOf({.kind = Problem::Kind::ErrorReport, .command = Command::readRegister(9), .error = 1}),
            "the bridge on usbserial-test answered \"read kp\" with: the command came too slowly (error 1).");
}

TEST(ProblemWords, GoWithTheStatusToExitWith) {
  const auto codeOf = [](const Problem &problem) { return failureFrom(problem, {}).code; };
  EXPECT_EQ(codeOf({.kind = Problem::Kind::ErrorReport, .error = 4}), ExitCode::NoServo);
  EXPECT_EQ(codeOf({.kind = Problem::Kind::ErrorReport, .error = 3}), ExitCode::BadValue);
  EXPECT_EQ(codeOf({.kind = Problem::Kind::ErrorReport, .error = 1}), ExitCode::Failed);
  EXPECT_EQ(codeOf({.kind = Problem::Kind::NotOneServo}), ExitCode::NoServo);
  EXPECT_EQ(codeOf({.kind = Problem::Kind::Cancelled}), ExitCode::Interrupted);
  EXPECT_EQ(codeOf({.kind = Problem::Kind::Gone}), ExitCode::NoPort);
  EXPECT_EQ(codeOf({.kind = Problem::Kind::NotTaken}), ExitCode::Failed);
}

}  // namespace
}  // namespace tavril::cli
