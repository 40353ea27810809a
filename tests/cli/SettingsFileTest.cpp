#include "cli/JsonPlaces.h"
#include "cli/SettingsFile.h"
#include "tests/cli/FailureOf.h"
#include "tests/support/ChildProcess.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril::cli {
namespace {

const Settings all{{1, 1},   {2, 2},   {3, 0},     {4, 1},   {5, 80},  {6, 60},  {7, 84},  {8, 400},
                   {9, 440}, {10, 10}, {11, 8000}, {12, 12}, {13, 20}, {14, 30}, {15, -20}};

QStringList problemsOf(const QByteArray &document) {
  return checkSettings(document).problems;
}

/// A document whose settings are these.
QByteArray with(const QByteArray &settings) {
  return "{\"format\": \"tavril-servo-settings\", \"version\": 1,\n\"settings\": {" + settings + "}}";
}

QByteArray contentOf(const QString &path) {
  QFile file(path);
  return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray("(unreadable)");
}

void write(const QString &path, const QByteArray &content) {
  QFile file(path);
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write(content);
}

TEST(SettingsText, IsReadBackAsItWasWritten) {
  const CheckedSettings checked = checkSettings(settingsText(all));
  EXPECT_EQ(checked.problems, QStringList());
  EXPECT_EQ(checked.settings, all);
}

TEST(SettingsText, HasUnitsAndRanges) {
  const QByteArray text = settingsText(all);
  EXPECT_TRUE(text.contains("\"max_tempertaure\": {\"value\": 80, \"unit\": \"°C\", \"range\": [0, 253]},"));
  EXPECT_TRUE(
      text.contains("\"calibration_angle\": {\"value\": -20, \"unit\": \"\", \"range\": [-20, 20]}\n"));
}

TEST(SettingsCheck, TakesSomeSettingsAndPlainNumbers) {
  const CheckedSettings checked = checkSettings(with("\"kp\": 440, \"ki\": {\"value\": 7}"));
  EXPECT_EQ(checked.problems, QStringList());
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
                   QStringLiteral("9:5: settings.kq is no setting"),
                   QStringLiteral("10:5: settings.present_load is a live value, which cannot be set"),
                   QStringLiteral("11:5: settings.sid has no value"),
                   QStringLiteral("12:30: settings.max_load.unit must be \"\""),
                   QStringLiteral("12:43: settings.max_load.range must be [0, 512]"),
                   QStringLiteral("13:5: settings.over_load must be a number")}));
  EXPECT_TRUE(checkSettings(document).settings.empty());
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
  EXPECT_TRUE(checkSettings(with("\"sid\": 254, \"kp\": -1")).onlyRanges);
  EXPECT_FALSE(checkSettings(with("\"sid\": 254, \"kq\": 1")).onlyRanges);
  EXPECT_FALSE(checkSettings(with("\"sid\": 25")).onlyRanges);
}

TEST(JsonPlaces, CountsCharactersAndNotBytes) {
  const JsonPlaces places("{\"°\": \"\\\"\", \"a\": [{\"b\": 1}, {\"b\": 2}], \"c\": {\"d\": null}}");
  EXPECT_EQ(places.of(QStringLiteral("a")).column, 13);
  EXPECT_EQ(places.of(QStringLiteral("c.d")).column, 46);
  EXPECT_TRUE(places.repeated().empty());
}

struct Folder {
  QString path(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }
  QTemporaryDir folder;
};

TEST(SettingsFile, IsLoadedOrAllItsProblemsAreTold) {
  const Folder folder;
  const QString path = folder.path("servo.json");
  write(path, settingsText(all));
  EXPECT_EQ(loadSettings(path), all);
  write(path, with("\"sid\": 254,\n\"kp\": -1"));
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
  write(folder.path("large"), QByteArray(2 << 20, ' '));
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
  write(folder.path("target"), "old");
  QFile::link(folder.path("target"), folder.path("link"));
  saveFile(folder.path("link"), "new", true);
  EXPECT_TRUE(QFileInfo(folder.path("link")).isSymLink());
  EXPECT_EQ(contentOf(folder.path("target")), "new");
}

TEST(SavedFile, IsNoFolderAndNeedsOneToBeIn) {
  const Folder folder;
  EXPECT_EQ(failureOf([&] { saveFile(folder.folder.path(), "x", true); }).code, ExitCode::Failed);
  EXPECT_EQ(failureOf([&] { saveFile(folder.path("no/such/file"), "x", false); }).code, ExitCode::Failed);
}

TEST(SavedFile, StaysAsItWasWhereItCannotBeReplaced) {
  const Folder folder;
  const QString path = folder.path("a.json");
  write(path, "old");
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
