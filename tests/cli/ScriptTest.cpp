#include "cli/CommandLine.h"
#include "cli/Completion.h"
#include "cli/Files.h"
#include "cli/Script.h"
#include "tests/cli/FailureOf.h"

#include <QFile>
#include <QIODevice>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

namespace tavril::cli {
namespace {

QStringList words(const char *line) {
  return wordsOf(QString::fromUtf8(line));
}

QStringList list(const char *joined) {
  return QString::fromUtf8(joined).split(u'|');
}

TEST(Script, IsReadAsAShellReadsIt) {
  EXPECT_EQ(words("  read  kp\tki \r"), list("read|kp|ki"));
  EXPECT_EQ(words("dump 'my file.json' \"a \\\"b\\\"\" c\\ d"), list("dump|my file.json|a \"b\"|c d"));
  EXPECT_EQ(words("read kp # the gain"), list("read|kp"));
  EXPECT_EQ(words("dump a#b"), list("dump|a#b"));
  EXPECT_EQ(words("dump ''"), (QStringList{QStringLiteral("dump"), QString()}));
  EXPECT_EQ(words("# nothing"), QStringList());
  EXPECT_EQ(failureOf([] { words("dump 'a"); }).text.toStdString(), "a quotation mark is not closed.");
}

TEST(Script, MayBeginWithAByteOrderMarkAndKeepsAllOthers) {
  const QTemporaryDir folder;
  const QString path = folder.filePath(QStringLiteral("script"));
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("\xEF\xBB\xBFread kp\ndump \xEF\xBB\xBFx\n");
  file.close();
  const auto source = commandsIn(path);
  EXPECT_EQ(source->next(), QStringLiteral("read kp"));
  EXPECT_EQ(bytesOf(source->next().value_or(QString())), "dump \xEF\xBB\xBFx");
}

TEST(Script, TakesNoOptionsOfTheWholeSession) {
  EXPECT_EQ(commandIn(words("read kp --json")).verb, Verb::Read);
  EXPECT_EQ(failureOf([] { commandIn(words("read --port x")); }).text.toStdString(),
            "--port applies to the whole session: give it to tavrilctl itself.");
  for (const char *line : {"ports", "doctor", "run f", "shell"}) {
    EXPECT_EQ(failureOf([&] { commandIn(words(line)); }).code, ExitCode::Usage) << line;
  }
  EXPECT_EQ(failureOf([] { commandIn(words("read --help")); }).code, ExitCode::Usage);
}

TEST(Script, LeavesTheStandardInputToTheSession) {
  for (const char *line : {"restore -", "diff -", "diff a -"}) {
    EXPECT_EQ(failureOf([&] { commandIn(words(line)); }).code, ExitCode::Usage) << line;
  }
  EXPECT_EQ(failureOf([] { commandIn(words("restore -")); }).text.toStdString(),
            "restore cannot read the standard input within a session: name a file.");
  EXPECT_EQ(commandIn(words("dump -")).verb, Verb::Dump);
}

Candidates candidates(const char *before, const char *beginning) {
  static const CommandBook book = CommandLine::book(QStringLiteral("1"));
  return candidatesFor(book, QString::fromUtf8(before).split(u' ', Qt::SkipEmptyParts),
                       QString::fromUtf8(beginning));
}

TEST(Candidates, AreTheCommandsOfASession) {
  EXPECT_EQ(candidates("", "re").words, list("read|restore|release|reboot|reset"));
  EXPECT_EQ(candidates("", "sh").words, QStringList());
}

TEST(Candidates, AreTheRegistersThatAreNotOnTheLineYet) {
  EXPECT_EQ(candidates("read kp", "k").words, list("ki|kd"));
  EXPECT_EQ(candidates("write kp=5", "k").words, list("ki=|kd="));
  EXPECT_TRUE(candidates("write", "k").isOpen);
  EXPECT_EQ(candidates("restore f --except", "k").words, list("kp|ki|kd"));
}

TEST(Candidates, AreOptionsAndFiles) {
  EXPECT_EQ(candidates("move", "--w").words, list("--wait"));
  EXPECT_TRUE(candidates("dump", "a").files);
  EXPECT_TRUE(candidates("monitor --csv", "a").files);
  EXPECT_FALSE(candidates("move", "1").files);
}

}  // namespace
}  // namespace tavril::cli
