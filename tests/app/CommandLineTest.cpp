#include "app/CommandLine.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

CommandLine parse(const QStringList &options) {
  return CommandLine::parse(QStringList{QStringLiteral("tavril")} + options, QStringLiteral("1.2.3"));
}

TEST(CommandLine, TakesItsOptions) {
  const CommandLine line =
      parse({"--report", "--json", "--port", "/dev/a", "--port", "/dev/b", "--language", "en"});
  EXPECT_FALSE(line.answer);
  EXPECT_TRUE(line.report);
  EXPECT_EQ(line.format, ReportFormat::Json);
  EXPECT_EQ(line.ports, (QStringList{"/dev/a", "/dev/b"}));
  EXPECT_EQ(line.language, "en");
  EXPECT_FALSE(line.demo);
  EXPECT_TRUE(parse({"--demo"}).demo);
  EXPECT_FALSE(line.connect);
  EXPECT_TRUE(parse({"--connect"}).connect);
  EXPECT_EQ(parse({"--connect", "--port", "/dev/a"}).ports, QStringList{"/dev/a"});
}

TEST(CommandLine, KnowsWhatOnlyAWindowOfItsOwnCanFollow) {
  EXPECT_EQ(parse({}).forOwnWindow(), "");
  EXPECT_EQ(parse({"--connect"}).forOwnWindow(), "--connect");
  EXPECT_EQ(parse({"--demo"}).forOwnWindow(), "--demo");
  EXPECT_EQ(parse({"--connect", "--port", "/dev/a"}).forOwnWindow(), "--port");
  EXPECT_EQ(parse({"--language", "de"}).forOwnWindow(), "--language");
}

TEST(CommandLine, ConnectsToTheOnePortThatIsNamedOrListed) {
  EXPECT_TRUE(parse({"--connect"}).knowsItsPort(1));
  EXPECT_FALSE(parse({"--connect"}).knowsItsPort(0));
  EXPECT_FALSE(parse({"--connect"}).knowsItsPort(2));
  EXPECT_TRUE(parse({"--connect", "--port", "/dev/a"}).knowsItsPort(3));
  EXPECT_FALSE(parse({"--connect", "--port", "/dev/a", "--port", "/dev/b"}).knowsItsPort(3));
  EXPECT_TRUE(parse({"--demo"}).knowsItsPort(0));
}

TEST(CommandLine, HelpAndVersionArePrintedAndSucceed) {
  EXPECT_EQ(parse({"--version"}).answer->text, "tavril 1.2.3\n");
  EXPECT_EQ(parse({"--version"}).answer->status, 0);
  EXPECT_EQ(parse({"--help"}).answer->status, 0);
  for (const char *option :
       {"--demo", "--connect", "--port", "--language", "--report", "--json", "--snapshot"}) {
    EXPECT_TRUE(parse({"--help"}).answer->text.contains(option)) << option;
  }
  EXPECT_FALSE(parse({"--help"}).answer->text.contains("<executable_name>"));
}

TEST(CommandLine, WhatCannotBeMeantIsAUsageError) {
  const QList<QStringList> wrong{{"--nonsense"},
                                 {"stray"},
                                 {"--json"},
                                 {"--demo", "--port", "/dev/a"},
                                 {"--port"},
                                 {"--port", ""},
                                 {"--connect", "--report"},
                                 {"--connect", "--snapshot", "x.png"}};
  for (const QStringList &options : wrong) {
    const CommandLine line = parse(options);
    ASSERT_TRUE(line.answer) << options.join(u' ').toStdString();
    EXPECT_EQ(line.answer->status, 2);
    EXPECT_TRUE(line.answer->text.contains("--help"));
    EXPECT_FALSE(line.answer->text.trimmed().contains(u'\n'));
  }
}

}  // namespace
}  // namespace tavril
