// What the program says before it opens anything, and what it does when its streams are not what they should
// be.
#include "tests/support/Program.h"
#include "tests/support/ShippedLanguages.h"

#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <regex>

namespace tavril {
namespace {

const QStringList demo{QStringLiteral("--demo"), QStringLiteral("--report")};

Program::Outcome run(const QStringList &arguments) {
  TavrilProgram program(arguments);
  return program.outcome();
}

/// As a shell runs it with the redirections given.
Program::Outcome runRedirected(const QString &redirections, const QStringList &arguments) {
  Program program(QStringLiteral("/bin/sh"), TavrilProgram::redirected(redirections, arguments));
  return program.outcome();
}

TEST(TavrilProgram, ShowsItsHelp) {
  for (const QString &option : {QStringLiteral("--help"), QStringLiteral("-h")}) {
    const Program::Outcome outcome = run({option});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    for (const char *named : {"Usage: ", "--demo", "--port <path>", "--language <language>", "--report",
                              "--json", "--version", "--help"}) {
      EXPECT_NE(outcome.out.find(named), std::string::npos) << named << " in:\n" << outcome.out;
    }
  }
}

TEST(TavrilProgram, ShowsItsVersion) {
  for (const QString &option : {QStringLiteral("--version"), QStringLiteral("-v")}) {
    const Program::Outcome outcome = run({option});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.err, "");
    EXPECT_TRUE(std::regex_match(outcome.out, std::regex("tavril \\d+\\.\\d+\\.\\d+\n"))) << outcome.out;
  }
}

TEST(TavrilProgram, RefusesWhatItDoesNotUnderstandWithOneLine) {
  const std::string help = " \"tavril --help\" lists the options.";
  constexpr int usage = 2;
  expectComplaint(run({QStringLiteral("--bogus")}), "Unknown option 'bogus'." + help, usage);
  expectComplaint(run({QStringLiteral("/dev/ttyUSB0")}), "\"/dev/ttyUSB0\" is not an option." + help, usage);
  expectComplaint(run({QStringLiteral("--demo"), QStringLiteral("--json")}), "--json needs --report." + help,
                  usage);
  expectComplaint(
      run(demo + QStringList{QStringLiteral("--port"), QStringLiteral("/dev/ttyUSB0")}),
      "--demo and --port cannot be used together: --demo is the virtual servo, --port a real one." + help,
      usage);
  expectComplaint(run({QStringLiteral("--report"), QStringLiteral("--port")}),
                  "Missing value after '--port'." + help, usage);
  expectComplaint(run({QStringLiteral("--report"), QStringLiteral("--port=")}),
                  "--port needs the path of a terminal, such as /dev/ttyUSB0." + help, usage);
}

TEST(TavrilProgram, ListsTheLanguagesWhenTheOneWantedIsNotThere) {
  expectComplaint(run(demo + QStringList{QStringLiteral("--language"), QStringLiteral("xx")}),
                  "there is no string table \"xx\". There are: de, en, es, fr, ja, ko, zh-Hans, zh-Hant.");
}

TEST(TavrilProgram, NeedsADisplayForItsWindow) {
  Program program(QStringLiteral("/usr/bin/env"),
                  {QStringLiteral("-u"), QStringLiteral("DISPLAY"), QStringLiteral("-u"),
                   QStringLiteral("WAYLAND_DISPLAY"), QStringLiteral("-u"), QStringLiteral("QT_QPA_PLATFORM"),
                   QStringLiteral(TAVRIL_PROGRAM)});
  expectComplaint(program.outcome(),
                  "there is no display for the window: use --report, or --snapshot FILE.png.");
}

TEST(TavrilProgram, TakesAPictureAndSaysIfItCannotBeWritten) {
  const QTemporaryDir folder;
  const QString picture = folder.filePath(QStringLiteral("editor.png"));
  EXPECT_EQ(run({QStringLiteral("--demo"), QStringLiteral("--snapshot"), picture}).status, 0);
  EXPECT_TRUE(QFileInfo::exists(picture));
  const Program::Outcome outcome = run({QStringLiteral("--demo"), QStringLiteral("--snapshot"),
                                        folder.filePath(QStringLiteral("none/editor.png"))});
  EXPECT_EQ(outcome.status, 1);
  EXPECT_NE(outcome.err.find("tavril: the picture could not be written to " + folder.path().toStdString() +
                             "/none/editor.png: name a .png file in a folder that you may write to.\n"),
            std::string::npos)
      << outcome.err;
}

TEST(TavrilProgram, SaysInItsHelpWhatDecidesTheLanguage) {
  QString help = QString::fromStdString(run({QStringLiteral("--help")}).out).simplified();
  EXPECT_TRUE(help.contains(
      QStringLiteral("By default, Tavril uses the language that was chosen in the menu, else the "
                     "system's language, else English.")))
      << help.toStdString();
}

TEST(TavrilProgram, ReportsTheSameInEachLanguage) {
  const Program::Outcome english =
      run(demo + QStringList{QStringLiteral("--language"), QStringLiteral("en")});
  ASSERT_EQ(english.status, 0);
  ASSERT_NE(english.out, "");
  EXPECT_GT(shippedLanguages().size(), 1);
  for (const QString &language : shippedLanguages()) {
    SCOPED_TRACE(qPrintable(language));
    expectSuccess(run(demo + QStringList{QStringLiteral("--language"), language}), english.out);
  }
}

TEST(TavrilProgram, DoesWithoutAStandardInput) {
  const Program::Outcome usual = run(demo);
  ASSERT_EQ(usual.status, 0);
  expectSuccess(runRedirected(QStringLiteral("<&-"), demo), usual.out);
}

TEST(TavrilProgram, FailsWhenItsOutputIsClosed) {
  expectComplaint(runRedirected(QStringLiteral(">&-"), demo),
                  "the output could not be written: Bad file descriptor.");
  expectComplaint(runRedirected(QStringLiteral(">&-"), {QStringLiteral("--version")}),
                  "the output could not be written: Bad file descriptor.");
}

TEST(TavrilProgram, FailsWhenTheDiskIsFull) {
  for (const QStringList &arguments : {demo, {QStringLiteral("--help")}, {QStringLiteral("--version")}}) {
    expectComplaint(runRedirected(QStringLiteral(">/dev/full"), arguments),
                    "the output could not be written: No space left on device.");
  }
}

TEST(TavrilProgram, FailsWhenNobodyReadsItsOutput) {
  const QTemporaryDir folder;
  const QString pipe = folder.filePath(QStringLiteral("pipe"));
  // The reader has to be there for the writer to get the pipe open, and has gone when the program starts.
  Program program(
      QStringLiteral("/bin/sh"),
      QStringList{QStringLiteral("-c"),
                  QStringLiteral("mkfifo \"$0\" && exec 3<>\"$0\" 4>\"$0\" 3<&- && exec \"$@\" >&4"), pipe,
                  QStringLiteral(TAVRIL_PROGRAM)} +
          demo);
  expectComplaint(program.outcome(), "the output could not be written: Broken pipe.");
}

TEST(TavrilProgram, FailsTheSameWithoutAnyStream) {
  const Program::Outcome outcome = runRedirected(QStringLiteral("<&- >&- 2>&-"), demo);
  EXPECT_EQ(outcome.status, 1);
  EXPECT_EQ(outcome.out, "");
  EXPECT_EQ(outcome.err, "");
}

TEST(TavrilProgram, ReportsAsUsualWithoutAStreamForErrors) {
  const Program::Outcome usual = run(demo);
  ASSERT_EQ(usual.status, 0);
  expectSuccess(runRedirected(QStringLiteral("2>&-"), demo), usual.out);
}

}  // namespace
}  // namespace tavril
