#include "simulator/CommandLine.h"

#include <gtest/gtest.h>

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;

CommandLine parse(const char *arguments) {
  QStringList list{QStringLiteral("tavril-servo")};
  list += QString::fromLatin1(arguments).split(u' ', Qt::SkipEmptyParts);
  return CommandLine::parse(list);
}

TEST(CommandLine, WithoutArgumentsServesOneFaultlessServoAtWirePace) {
  const CommandLine line = parse("");
  EXPECT_EQ(line.action, CommandLine::Action::Serve);
  EXPECT_EQ(line.options.servos, Options::Servos::One);
  EXPECT_TRUE(line.options.pace);
  EXPECT_FALSE(line.options.mute || line.options.glue || line.options.noise || line.options.wrongLength ||
               line.options.lateEnds);
  EXPECT_EQ(line.options.delay, 0ms);
  EXPECT_EQ(line.options.startUp, 0ms);
  EXPECT_EQ(line.options.splitSize, 0);
  EXPECT_EQ(line.options.readError, std::nullopt);
  EXPECT_EQ(line.options.writeError, std::nullopt);
  EXPECT_FALSE(line.options.obeysReplyPolicy);
  EXPECT_EQ(line.options.unplugAfter, 0);
  EXPECT_TRUE(line.link.isEmpty());
  EXPECT_TRUE(line.logFile.isEmpty());
}

TEST(CommandLine, EveryOptionReachesItsFault) {
  const CommandLine line = parse(
      "--link /tmp/a --log /tmp/b --two-servos --mute --lose 9 --delay 11 --start-up 22 --split 3 "
      "--split-gap 44 "
      "--glue "
      "--noise --seed 4294967295 --wrong-length --late-ends --error 2 --write-error 3 --obey-ack-policy "
      "--from /tmp/c --state /tmp/d --unplug-after 7 --no-pace");
  EXPECT_EQ(line.action, CommandLine::Action::Serve) << line.text.toStdString();
  EXPECT_EQ(line.link, QStringLiteral("/tmp/a"));
  EXPECT_EQ(line.logFile, QStringLiteral("/tmp/b"));
  EXPECT_EQ(line.options.servos, Options::Servos::Several);
  EXPECT_TRUE(line.options.mute);
  EXPECT_EQ(line.options.loseOneIn, 9);
  EXPECT_EQ(line.options.delay, 11ms);
  EXPECT_EQ(line.options.startUp, 22ms);
  EXPECT_EQ(line.options.splitSize, 3);
  EXPECT_EQ(line.options.splitGap, 44ms);
  EXPECT_TRUE(line.options.glue);
  EXPECT_TRUE(line.options.noise);
  EXPECT_EQ(line.options.seed, 4294967295U);
  EXPECT_TRUE(line.options.wrongLength);
  EXPECT_TRUE(line.options.lateEnds);
  EXPECT_EQ(line.options.readError, 2);
  EXPECT_EQ(line.options.writeError, 3);
  EXPECT_TRUE(line.options.obeysReplyPolicy);
  EXPECT_EQ(line.from, QStringLiteral("/tmp/c"));
  EXPECT_EQ(line.state, QStringLiteral("/tmp/d"));
  EXPECT_EQ(line.options.unplugAfter, 7);
  EXPECT_FALSE(line.options.pace);
}

TEST(CommandLine, NoServoIsNone) {
  EXPECT_EQ(parse("--no-servo").options.servos, Options::Servos::None);
}

TEST(CommandLine, ErrorZeroIsAnErrorToo) {
  EXPECT_EQ(parse("--error 0").options.readError, 0);
}

TEST(CommandLine, ShowsVersionAndHelp) {
  EXPECT_EQ(parse("--version").action, CommandLine::Action::ShowText);
  EXPECT_TRUE(parse("--version").text.startsWith(QStringLiteral("tavril-servo ")));
  EXPECT_EQ(parse("--help").action, CommandLine::Action::ShowText);
  EXPECT_TRUE(parse("--help").text.contains(QStringLiteral("--unplug-after <N>")));
}

struct Refused {
  const char *arguments;
  const char *text;
};

class CommandLineRefusal : public testing::TestWithParam<Refused> {};

TEST_P(CommandLineRefusal, SaysWhatIsWrong) {
  const CommandLine line = parse(GetParam().arguments);
  EXPECT_EQ(line.action, CommandLine::Action::Refuse);
  EXPECT_EQ(line.text.toStdString(), GetParam().text);
}

INSTANTIATE_TEST_SUITE_P(
    BadArguments, CommandLineRefusal,
    testing::Values(
        Refused{"--wobble", "Unknown option 'wobble'."}, Refused{"extra", "Unexpected argument 'extra'."},
        Refused{"--lose 0", "--lose takes a number from 1 to 2147483647, not '0'."},
        Refused{"--delay", "Missing value after '--delay'."},
        Refused{"--delay soon", "--delay takes a number from 0 to 600000, not 'soon'."},
        Refused{"--delay=-1", "--delay takes a number from 0 to 600000, not '-1'."},
        Refused{"--split 0", "--split takes a number from 1 to 50, not '0'."},
        Refused{"--split 51", "--split takes a number from 1 to 50, not '51'."},
        Refused{"--error 256", "--error takes a number from 0 to 255, not '256'."},
        Refused{"--unplug-after 0", "--unplug-after takes a number from 1 to 2147483647, not '0'."},
        Refused{"--seed 4294967296", "--seed takes a number from 0 to 4294967295, not '4294967296'."},
        Refused{"--no-servo --two-servos", "--no-servo and --two-servos exclude each other."},
        Refused{"--pace --no-pace", "--pace and --no-pace exclude each other."},
        Refused{"--link=", "--link needs a path."}, Refused{"--log=", "--log needs a path."}));

}  // namespace
}  // namespace tavril::simulator
