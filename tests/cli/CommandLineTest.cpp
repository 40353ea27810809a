#include "cli/CommandLine.h"
#include "cli/Files.h"

#include <gtest/gtest.h>

namespace tavril::cli {
namespace {

using std::chrono::milliseconds;

CommandLine parse(const char *line) {
  return CommandLine::parse(QString::fromLatin1(line).split(u' ', Qt::SkipEmptyParts),
                            QStringLiteral("1.2.3"));
}

Options optionsOf(const char *text) {
  const CommandLine line = parse(text);
  EXPECT_FALSE(line.answer) << text << ": " << line.answer->text.toStdString();
  return line.options;
}

struct Refused {
  const char *line;
  const char *text;
};

TEST(CtlCommandLine, HasDefaults) {
  const Options options = optionsOf("detect");
  EXPECT_EQ(options.verb, Verb::Detect);
  EXPECT_EQ(options.timeout, milliseconds(300));
  EXPECT_EQ(options.retries, 2);
  EXPECT_EQ(options.bootWait, milliseconds(5000));
  EXPECT_EQ(options.port, QString());
  EXPECT_FALSE(options.demo || options.verbose || options.json || options.force);
}

TEST(CtlCommandLine, KnowsEveryCommand) {
  const std::vector<std::pair<const char *, Verb>> commands{
      {"ports", Verb::Ports},         {"set-id 4", Verb::SetId},    {"stop", Verb::Stop},
      {"run f", Verb::Run},           {"shell", Verb::Shell},       {"doctor", Verb::Doctor},
      {"detect", Verb::Detect},       {"read", Verb::Read},         {"write kp=1", Verb::Write},
      {"dump f", Verb::Dump},         {"restore f", Verb::Restore}, {"diff f", Verb::Diff},
      {"position", Verb::Position},   {"move 5", Verb::Move},       {"release", Verb::Release},
      {"reboot --yes", Verb::Reboot}, {"reset --yes", Verb::Reset}, {"monitor", Verb::Monitor},
      {"send FF", Verb::Send}};
  for (const auto &[line, verb] : commands) EXPECT_EQ(optionsOf(line).verb, verb) << line;
  EXPECT_EQ(CommandLine::book(QStringLiteral("1")).commands.size(), commands.size());
}

TEST(CtlCommandLine, UnderstandsItsOwnExamplesAndShowsThemInTheHelp) {
  const CommandLine help = parse("--help");
  ASSERT_TRUE(help.answer);
  EXPECT_EQ(help.answer->status, 0);
  const CommandBook book = CommandLine::book(QStringLiteral("1"));
  EXPECT_GE(book.examples.size(), 5u);
  for (const Example &example : book.examples) {
    EXPECT_TRUE(help.answer->text.contains(example.command)) << example.command.toStdString();
    ASSERT_TRUE(example.command.startsWith(u"tavrilctl "));
    optionsOf(qPrintable(example.command.section(u' ', 1)));
  }
}

TEST(CtlCommandLine, TakesCommonOptionsBeforeAndBehindTheCommand) {
  for (const char *line :
       {"--port /dev/x --timeout 50 --retries 0 --boot-wait 0 --verbose read kp ki --json",
        "read kp ki --json --port /dev/x --timeout 50ms --retries 0 --boot-wait=0s --verbose"}) {
    const Options options = optionsOf(line);
    EXPECT_EQ(options.operands, (QStringList{QStringLiteral("kp"), QStringLiteral("ki")}));
    EXPECT_EQ(options.port, QStringLiteral("/dev/x"));
    EXPECT_EQ(options.timeout, milliseconds(50));
    EXPECT_EQ(options.retries, 0);
    EXPECT_EQ(options.bootWait, milliseconds(0));
    EXPECT_TRUE(options.verbose && options.json);
  }
}

TEST(CtlCommandLine, WaitsForNoBridgeInTheDemoUnlessToldTo) {
  EXPECT_EQ(optionsOf("detect --demo").bootWait, milliseconds(0));
  EXPECT_EQ(optionsOf("detect --demo --boot-wait 0.5").bootWait, milliseconds(500));
}

TEST(CtlCommandLine, TakesTheNameOfACommandForAnOperandBehindAnother) {
  EXPECT_EQ(optionsOf("dump position").operands, QStringList{QStringLiteral("position")});
}

TEST(CtlCommandLine, HasTheOptionsOfItsCommands) {
  EXPECT_TRUE(optionsOf("write kp=1 --dry-run").dryRun);
  EXPECT_TRUE(optionsOf("restore f --dry-run").dryRun);
  EXPECT_TRUE(optionsOf("dump f --force").force);
  EXPECT_TRUE(optionsOf("move 5 --wait").wait);
  const Options monitor = optionsOf("monitor --interval 20 --count 3 --csv f --force");
  EXPECT_EQ(monitor.interval, milliseconds(20));
  EXPECT_EQ(monitor.count, 3);
  EXPECT_EQ(monitor.csv, QStringLiteral("f"));
  EXPECT_TRUE(monitor.force);
  EXPECT_FALSE(optionsOf("monitor").count);
}

TEST(CtlCommandLine, RefusesWhatCannotBeMeantAsAUsageError) {
  const std::string help = " \"tavrilctl --help\" lists the commands and options.";
  for (const auto &[line, text] : {
           Refused{"", "no command was given."},
           Refused{"bogus", "there is no command \"bogus\"."},
           Refused{"montor", "there is no command \"montor\". Did you mean monitor?"},
           Refused{"detect x", "detect takes no further argument, but \"x\" was given."},
           Refused{"detect --port", "--port lacks its value, NAME|PATH."},
           Refused{"detect --port a --port b", "--port was given more than once."},
           Refused{"read --jsn", "read has no option \"--jsn\". Did you mean --json?"},
           Refused{"read --bogus", "read has no option \"--bogus\"."},
           Refused{"--bogus", "tavrilctl has no option \"--bogus\"."},
           Refused{"write", "write lacks its argument ASSIGNMENT."},
           Refused{"dump", "dump lacks its argument FILE."},
           Refused{"diff a b c", "diff takes one file or two."},
           Refused{"detect --timeout 0", "--timeout takes a time from 1 ms to 60000 ms, not \"0\"."},
           Refused{"detect --timeout soon", "--timeout takes a time from 1 ms to 60000 ms, not \"soon\"."},
           Refused{"detect --retries -1", "--retries takes a number from 0 to 100, not \"-1\"."},
           Refused{"detect --retries 1.5", "--retries takes a number from 0 to 100, not \"1.5\"."},
           Refused{"detect --boot-wait 601", "--boot-wait takes a time from 0 s to 600 s, not \"601\"."},
           Refused{"monitor --count 0", "--count takes a number from 1 to 2147483647, not \"0\"."},
           Refused{
               "detect --demo --port x",
               "--demo and --port cannot be used together: --demo is the virtual servo, --port a real one."},
           Refused{"detect --generate x", "--generate takes bash, zsh, fish, man or registers."},
       }) {
    const CommandLine parsed = parse(line);
    ASSERT_TRUE(parsed.answer) << line;
    EXPECT_EQ(parsed.answer->text.toStdString(), text + help) << line;
    EXPECT_EQ(parsed.answer->status, 2) << line;
  }
}

TEST(CtlCommandLine, ResetsOnlyWhenToldThatItIsMeant) {
  const CommandLine parsed = parse("reset");
  ASSERT_TRUE(parsed.answer);
  EXPECT_EQ(parsed.answer->status, 2);
  EXPECT_TRUE(parsed.answer->text.contains(QStringLiteral("--yes")));
}

TEST(CtlCommandLine, HasTheShortOptionsThatSuchToolsHave) {
  EXPECT_EQ(optionsOf("read -p x").port, QStringLiteral("x"));
  EXPECT_TRUE(optionsOf("read -v").verbose);
  EXPECT_TRUE(optionsOf("read -q").quiet);
  EXPECT_TRUE(optionsOf("write kp=1 -n").dryRun);
  EXPECT_TRUE(optionsOf("reset -y").yes);
}

TEST(CtlCommandLine, TakesSettingsToLeaveOutOneByOneOrInAList) {
  EXPECT_EQ(optionsOf("restore f --except sid --except kp,ki").except,
            (QStringList{QStringLiteral("sid"), QStringLiteral("kp"), QStringLiteral("ki")}));
}

TEST(CtlCommandLine, TakesBracketsAndBracesAsTheyWereTyped) {
  for (const char *name : {"[x]", "[a,b]", "[]", "[[x]]", "[", "{}", "[\xFF]", "--except=[x]"}) {
    const QString typed = textOf(name);
    const QStringList arguments{QStringLiteral("dump"), QStringLiteral("--"), typed};
    EXPECT_EQ(CommandLine::parse(arguments, QStringLiteral("1")).options.operands, QStringList{typed})
        << name;
  }
  EXPECT_EQ(optionsOf("read [kp,ki] [x]").operands,
            (QStringList{QStringLiteral("[kp,ki]"), QStringLiteral("[x]")}));
  EXPECT_EQ(optionsOf("restore f --except [sid] --except=[kp]").except,
            (QStringList{QStringLiteral("[sid]"), QStringLiteral("[kp]")}));
  EXPECT_EQ(optionsOf("read -p [[x]]").port, QStringLiteral("[[x]]"));
  EXPECT_TRUE(parse("detect [x]").answer->text.contains(QStringLiteral("\"[x]\" was given.")));
}

TEST(CtlCommandLine, LeavesNoSettingOutThatHasNoName) {
  for (const QString &keys : {QString(), QStringLiteral(","), QStringLiteral("kp,")}) {
    const CommandLine parsed =
        CommandLine::parse({QStringLiteral("restore"), QStringLiteral("f"), QStringLiteral("--except"), keys},
                           QStringLiteral("1"));
    ASSERT_TRUE(parsed.answer) << keys.toStdString();
    EXPECT_EQ(parsed.answer->status, 2);
    EXPECT_TRUE(
        parsed.answer->text.startsWith(QStringLiteral("--except needs the key of a setting, such as sid.")))
        << parsed.answer->text.toStdString();
  }
}

TEST(CtlCommandLine, SaysWhichCommonOptionsWereGiven) {
  EXPECT_EQ(parse("read kp -v --timeout 5").common,
            (QStringList{QStringLiteral("--timeout"), QStringLiteral("--verbose")}));
}

TEST(CtlCommandLine, RefusesOptionsThatContradictEachOther) {
  for (const char *line : {"read -q -v", "monitor --csv - --json", "ports --names --json", "diff - -",
                           "detect --demo --port x"}) {
    const CommandLine parsed = parse(line);
    ASSERT_TRUE(parsed.answer) << line;
    EXPECT_EQ(parsed.answer->status, 2) << line;
  }
}

TEST(CtlCommandLine, NeedsANameForAFile) {
  for (const char *command : {"dump", "restore", "diff", "run"}) {
    const CommandLine parsed =
        CommandLine::parse({QString::fromLatin1(command), QString()}, QStringLiteral("1"));
    ASSERT_TRUE(parsed.answer) << command;
    EXPECT_EQ(parsed.answer->status, 2);
    EXPECT_TRUE(parsed.answer->text.startsWith(QString::fromLatin1(command) +
                                               QStringLiteral(" needs the name of a file.")))
        << parsed.answer->text.toStdString();
  }
}

TEST(CtlCommandLine, NeedsANameForThePort) {
  const CommandLine parsed = CommandLine::parse(
      {QStringLiteral("detect"), QStringLiteral("--port"), QString()}, QStringLiteral("1"));
  ASSERT_TRUE(parsed.answer);
  EXPECT_EQ(parsed.answer->status, 2);
}

TEST(CtlCommandLine, AnswersHelpAndVersion) {
  EXPECT_EQ(parse("--version").answer->text, QStringLiteral("tavrilctl 1.2.3\n"));
  for (const char *line : {"--help", "-h", "detect -h", "--help read"}) {
    ASSERT_TRUE(parse(line).answer) << line;
    EXPECT_EQ(parse(line).answer->status, 0) << line;
  }
  EXPECT_TRUE(parse("read --help").answer->text.contains(QStringLiteral("tavrilctl read")));
}

TEST(CtlCommandLine, DescribesEverythingInItsHelp) {
  const CommandBook book = CommandLine::book(QStringLiteral("1"));
  const auto expectDescribed = [](const QString &help, const std::vector<OptionEntry> &options) {
    for (const OptionEntry &option : options) {
      EXPECT_FALSE(option.description.isEmpty());
      for (const QString &name : option.names) EXPECT_TRUE(help.contains(name)) << name.toStdString();
    }
  };
  expectDescribed(parse("--help").answer->text, book.commonOptions);
  for (const CommandEntry &command : book.commands) {
    EXPECT_TRUE(parse("--help").answer->text.contains(command.description));
    expectDescribed(parse(qPrintable(command.name + QStringLiteral(" --help"))).answer->text,
                    command.options);
  }
}

TEST(Durations, AreNumbersWithOrWithoutAUnit) {
  const auto duration = [](const char *text) {
    return durationOf(QString::fromLatin1(text), std::chrono::seconds(1));
  };
  EXPECT_EQ(duration("5"), milliseconds(5000));
  EXPECT_EQ(duration("0.25"), milliseconds(250));
  EXPECT_EQ(duration("250ms"), milliseconds(250));
  EXPECT_EQ(duration("2s"), milliseconds(2000));
  for (const char *text : {"", "s", "ms", "-1", "nan", "inf", "1e300", "5 m", "five"}) {
    EXPECT_FALSE(duration(text)) << text;
  }
}

}  // namespace
}  // namespace tavril::cli
