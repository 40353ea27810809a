#include "cli/Files.h"
#include "cli/SettingsFile.h"
#include "tests/cli/FailureOf.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/Pty.h"
#include "tests/support/TestFiles.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>
#include <unistd.h>

namespace tavril::cli {
namespace {

const Settings all{{1, 1},   {2, 2},   {3, 0},     {4, 1},   {5, 80},  {6, 60},  {7, 84},  {8, 400},
                   {9, 440}, {10, 10}, {11, 8000}, {12, 12}, {13, 20}, {14, 30}, {15, -20}};

records::CheckedSettings checkSettings(const QByteArray &document) {
  return records::checkSettings(document.toStdString());
}

QStringList problemsOf(const QByteArray &document) {
  return linesOf(checkSettings(document).problems);
}

/// A document whose settings are these.
QByteArray with(const QByteArray &settings) {
  return "{\"format\": \"tavril-servo-settings\", \"version\": 1,\n\"settings\": {" + settings + "}}";
}

TEST(SettingsCheck, TakesSomeSettingsAndPlainNumbers) {
  const records::CheckedSettings checked = checkSettings(with("\"kp\": 440, \"ki\": {\"value\": 7}"));
  EXPECT_EQ(linesOf(checked.problems), QStringList());
  EXPECT_EQ(checked.settings, (Settings{{9, 440}, {10, 7}}));
}

TEST(SettingsCheck, TellsWhereTheSyntaxIsWrong) {
  const QStringList problems = problemsOf("{\n  \"format\": tavril\n}");
  ASSERT_EQ(problems.size(), 1);
  EXPECT_TRUE(problems[0].startsWith(QStringLiteral("2:"))) << problems[0].toStdString();
  for (const char *document : {"", "{", "null", "[]", "{} x", "\"text\"", "\xFF\xFE"}) {
    EXPECT_FALSE(problemsOf(document).isEmpty()) << document;
  }
}

TEST(SettingsCheck, ShowsNoControlCharactersOfAKey) {
  EXPECT_EQ(problemsOf("{\"format\": \"tavril-servo-settings\", \"version\": 1, \"settings\": {\"kp\": 1},\n"
                       "\"\\n\\u001b[2J\u00e4\": 1}"),
            QStringList{QStringLiteral("2:1: \\u000a\\u001b[2J\u00e4 is an unknown key")});
}

TEST(SettingsCheck, ShowsAWholeCharacterOfAKeyAndNotHalfOfOne) {
  EXPECT_EQ(problemsOf("{\"format\": \"tavril-servo-settings\", \"version\": 1, \"settings\": {\"kp\": 1},\n"
                       "\"\\ude00\\ud83d\\ude00\\ud83d\": 1}"),
            QStringList{QStringLiteral("2:1: \\ude00\U0001F600\\ud83d is an unknown key")});
}

TEST(SettingsCheck, NamesEveryProblemWithItsPlace) {
  const QByteArray document =
      "{\n"
      "  \"format\": \"other\",\n"
      "  \"version\": 2,\n"
      "  \"colour\": 1,\n"
      "  \"settings\": {\n"
      "    \"kp\": {\"value\": 40000, \"step\": 1},\n"
      "    \"ki\": {\"value\": \"10\"},\n"
      "    \"kd\": 1.5,\n"
      "    \"kq\": 1,\n"
      "    \"present_load\": 1,\n"
      "    \"sid\": {},\n"
      "    \"max_load\": {\"value\": 1, \"unit\": \"A\", \"range\": [0, 5]},\n"
      "    \"over_load\": true\n"
      "  }\n"
      "}\n";
  EXPECT_EQ(
      problemsOf(document),
      (QStringList{QStringLiteral("2:3: format must be \"tavril-servo-settings\""),
                   QStringLiteral("3:3: version must be 1"), QStringLiteral("4:3: colour is an unknown key"),
                   QStringLiteral("6:12: settings.kp.value: 40000 is out of range (0 to 32766)"),
                   QStringLiteral("6:28: settings.kp.step is an unknown key"),
                   QStringLiteral("7:12: settings.ki.value must be a number"),
                   QStringLiteral("8:5: settings.kd must be a whole number"),
                   QStringLiteral("9:5: settings.kq is not a setting. Did you mean kp?"),
                   QStringLiteral("10:5: settings.present_load is measured by the servo and cannot be set"),
                   QStringLiteral("11:5: settings.sid has no value"),
                   QStringLiteral("13:5: settings.over_load must be a number")}));
  EXPECT_TRUE(checkSettings(document).settings.empty());
}

TEST(SettingsCheck, RemarksOnAnotherUnitOrRangeAndTakesTheValue) {
  const records::CheckedSettings checked =
      checkSettings(with("\"max_load\": {\"value\": 1, \"unit\": \"A\", \"range\": [0, 5]}"));
  EXPECT_EQ(linesOf(checked.problems), QStringList());
  EXPECT_EQ(checked.settings, (Settings{{8, 1}}));
  EXPECT_EQ(
      linesOf(checked.remarks),
      (QStringList{
          QStringLiteral("2:39: settings.max_load.unit is not \"\"; the value is taken as it is"),
          QStringLiteral("2:52: settings.max_load.range is not [0, 512]; the value is taken as it is")}));
}

TEST(SettingsCheck, UnderstandsTheTemperatureSpeltRightToo) {
  EXPECT_EQ(checkSettings(with("\"max_temperature\": 75")).settings, (Settings{{5, 75}}));
  EXPECT_EQ(problemsOf(with("\"max_temperature\": 75, \"max_tempertaure\": 76")).size(), 1);
}

TEST(SettingsCheck, MissesNothingThatMustBeThere) {
  EXPECT_EQ(problemsOf("{}"),
            (QStringList{QStringLiteral("1:1: format is missing"), QStringLiteral("1:1: version is missing"),
                         QStringLiteral("1:1: settings is missing")}));
  EXPECT_EQ(problemsOf(with("")), QStringList{QStringLiteral("2:1: settings has no settings")});
}

TEST(SettingsCheck, RefusesAKeyThatIsThereTwice) {
  EXPECT_EQ(problemsOf(with("\"kp\": 1, \"kp\": 2")),
            QStringList{QStringLiteral("2:23: settings.kp is there twice")});
  // Also where the second is written otherwise.
  EXPECT_EQ(problemsOf(with("\"kp\": 1, \"k\\u0070\": 2")),
            QStringList{QStringLiteral("2:23: settings.kp is there twice")});
}

TEST(SettingsCheck, KeepsToTheRangesAtBothEnds) {
  EXPECT_EQ(problemsOf(with("\"sid\": 253, \"kp\": 32766, \"calibration_angle\": -20")), QStringList());
  for (const char *setting : {"\"sid\": 254", "\"sid\": -1", "\"kp\": 32767", "\"calibration_angle\": -21",
                              "\"ack_policy\": 3", "\"torque_policy\": 2", "\"kp\": 4294967296"}) {
    EXPECT_EQ(problemsOf(with(setting)).size(), 1) << setting;
  }
}

TEST(SettingsCheck, TellsWhetherValuesAreOnlyOutOfRange) {
  EXPECT_TRUE(checkSettings(with("\"sid\": 254, \"kp\": -1")).onlyRanges());
  EXPECT_FALSE(checkSettings(with("\"sid\": 254, \"kq\": 1")).onlyRanges());
  EXPECT_FALSE(checkSettings(with("\"sid\": 25")).onlyRanges());
}

struct Folder {
  QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
  QTemporaryDir folder;
};

TEST(SettingsFile, IsLoadedOrAllItsProblemsAreTold) {
  const Folder folder;
  const QString path = folder.path("servo.json");
  writeFile(path, QByteArray::fromStdString(records::settingsText(all)));
  EXPECT_EQ(loadSettings(path).settings, all);
  writeFile(path, with("\"sid\": 254,\n\"kp\": -1"));
  const Failure failure = failureOf([&] { loadSettings(path); });
  EXPECT_EQ(failure.code, ExitCode::BadValue);
  EXPECT_EQ(failure.text.count(path), 3);
  EXPECT_TRUE(failure.text.contains(QStringLiteral(":3:1: settings.kp: -1 is out of range (0 to 32766)")))
      << failure.text.toStdString();
}

TEST(SettingsFile, ThatCannotBeReadIsAFailure) {
  const Folder folder;
  EXPECT_EQ(failureOf([&] { loadSettings(folder.path("nothing")); }).code, ExitCode::Failed);
  EXPECT_EQ(failureOf([&] { loadSettings(folder.folder.path()); }).code, ExitCode::Failed);
  EXPECT_EQ(failureOf([&] { loadSettings(QStringLiteral("/dev/zero")); }).code, ExitCode::Failed);
  writeFile(folder.path("large"), QByteArray(2 << 20, ' '));
  EXPECT_EQ(failureOf([&] { loadSettings(folder.path("large")); }).code, ExitCode::Failed);
}

TEST(SavedFile, ReplacesNoneWithoutBeingForced) {
  const Folder folder;
  const QString path = folder.path("a.json");
  saveFile(path, "one", false);
  EXPECT_EQ(failureOf([&] { saveFile(path, "two", false); }).code, ExitCode::Failed);
  EXPECT_EQ(failureOf([&] { expectNewFile(path, false); }).code, ExitCode::Failed);
  EXPECT_EQ(contentOf(path), "one");
  saveFile(path, "two", true);
  EXPECT_EQ(contentOf(path), "two");
  EXPECT_EQ(QDir(folder.folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST(SavedFile, CountsALinkAsAFileAlsoWhenItLeadsNowhere) {
  const Folder folder;
  QFile::link(folder.path("nowhere"), folder.path("dangling"));
  EXPECT_EQ(failureOf([&] { saveFile(folder.path("dangling"), "x", false); }).code, ExitCode::Failed);
  EXPECT_FALSE(QFileInfo::exists(folder.path("nowhere")));
}

TEST(SavedFile, IsReplacedWhereALinkLeads) {
  const Folder folder;
  writeFile(folder.path("target"), "old");
  QFile::link(folder.path("target"), folder.path("link"));
  saveFile(folder.path("link"), "new", true);
  EXPECT_TRUE(QFileInfo(folder.path("link")).isSymLink());
  EXPECT_EQ(contentOf(folder.path("target")), "new");
}

TEST(SavedFile, NeverReplacesWhatIsNoRegularFile) {
  const Folder folder;
  ASSERT_EQ(::mkfifo(qPrintable(folder.path("pipe")), 0600), 0);
  QFile::link(folder.path("pipe"), folder.path("link"));
  const Pty terminal;
  QFile::link(terminal.path(), folder.path("terminal"));
  for (const char *name : {"pipe", "link", "terminal"}) {
    for (const bool mayReplace : {false, true}) {
      EXPECT_EQ(failureOf([&] { saveFile(folder.path(name), "new", mayReplace); }).code, ExitCode::Failed)
          << name;
      EXPECT_EQ(failureOf([&] { expectNewFile(folder.path(name), mayReplace); }).code, ExitCode::Failed)
          << name;
      EXPECT_EQ(failureOf([&] { GrowingFile(folder.path(name), mayReplace); }).code, ExitCode::Failed)
          << name;
    }
  }
  struct stat status {};
  ASSERT_EQ(::stat(qPrintable(folder.path("link")), &status), 0);
  EXPECT_TRUE(S_ISFIFO(status.st_mode));
  ASSERT_EQ(::stat(qPrintable(folder.path("terminal")), &status), 0);
  EXPECT_TRUE(S_ISCHR(status.st_mode));
  EXPECT_EQ(
      QDir(folder.folder.path()).entryList(QDir::AllEntries | QDir::System | QDir::NoDotAndDotDot).size(), 3);
}

TEST(SavedFile, KeepsModeAndOwnerOfTheOneItReplaces) {
  const Folder folder;
  const QString path = folder.path("a.json");
  writeFile(path, "old");
  ASSERT_EQ(::chmod(qPrintable(path), 0640), 0);
  // Only the superuser can give a file away; the others have the mode to keep.
  const bool isSuperuser = ::geteuid() == 0;
  ASSERT_TRUE(!isSuperuser || ::chown(qPrintable(path), 65534, 65534) == 0);
  saveFile(path, "new", true);
  struct stat status {};
  ASSERT_EQ(::stat(qPrintable(path), &status), 0);
  EXPECT_EQ(status.st_mode & 07777, 0640U);
  EXPECT_EQ(status.st_uid, isSuperuser ? 65534U : ::geteuid());
  EXPECT_EQ(contentOf(path), "new");
}

TEST(SavedFile, StaysAsItWasWhenTheDiskIsFull) {
  const Folder folder;
  const QString path = folder.path("a.json");
  writeFile(path, "old");
  const int status = exitStatusOfChild([&] {
    const FileSizeLimit limit(10);
    return failureOf([&] { saveFile(path, QByteArray(1000, 'x'), true); }).code == ExitCode::Failed ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(path), "old");
  EXPECT_EQ(QDir(folder.folder.path()).entryList(QDir::Files | QDir::Hidden).size(), 1);
}

TEST(GrowingFile, HasNoHalfOfALineWhenTheDiskIsFull) {
  const Folder folder;
  const QString path = folder.path("a.csv");
  const int status = exitStatusOfChild([&] {
    const FileSizeLimit limit(10);
    GrowingFile file(path, false);
    file.add("1,2,3\n");
    return failureOf([&] { file.add("4,5,6\n"); }).code == ExitCode::Failed ? 0 : 1;
  });
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(path), "1,2,3\n");
}

TEST(FileNames, AreKeptByteForByte) {
  const Folder folder;
  const QByteArray name = "\xFF\xC3\xA4 \xF0\x9F\x98\x80\xED\xB2\x80\xEF\xBF\xBD\xEF\xBB\xBF";
  EXPECT_EQ(bytesOf(textOf(name)), name);
  const QByteArray path = folder.folder.path().toUtf8() + '/' + name;
  saveFile(textOf(path), "content", false);
  struct stat status {};
  EXPECT_EQ(::stat(path.constData(), &status), 0);
  EXPECT_EQ(readFile(textOf(path), 100), "content");
  EXPECT_EQ(::unlink(path.constData()), 0);  // Qt could not remove it with its folder
}

TEST(ShownTexts, HaveNoControlCharactersAndNoHalvesOfCharacters) {
  EXPECT_EQ(shown(textOf("a\x1b[2J\n\xFF\xC3\xA4")).toStdString(), "a\\u001b[2J\\u000a\\udcff\xC3\xA4");
}

TEST(SavedFile, IsNoFolderAndNeedsOneToBeIn) {
  const Folder folder;
  EXPECT_EQ(failureOf([&] { saveFile(folder.folder.path(), "x", true); }).code, ExitCode::Failed);
  EXPECT_EQ(failureOf([&] { saveFile(folder.path("no/such/file"), "x", false); }).code, ExitCode::Failed);
}

TEST(SavedFile, StaysAsItWasWhereItCannotBeReplaced) {
  const Folder folder;
  const QString path = folder.path("a.json");
  writeFile(path, "old");
  ASSERT_EQ(::chmod(qPrintable(folder.folder.path()), 0555), 0);
  const int status = exitStatusOfChild([&] {
    if (!becomeNobody()) return 2;
    return failureOf([&] { saveFile(path, "new", true); }).code == ExitCode::Failed ? 0 : 1;
  });
  ::chmod(qPrintable(folder.folder.path()), 0755);
  EXPECT_EQ(status, 0);
  EXPECT_EQ(contentOf(path), "old");
}

}  // namespace
}  // namespace tavril::cli
