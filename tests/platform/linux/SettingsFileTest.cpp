#include "platform/linux/PosixPrivateFiles.h"
#include "platform/linux/SettingsFile.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril {
namespace {

class SettingsFileTest : public testing::Test {
 protected:
  static unsigned modeOf(const QString &path) {
    struct stat status {};
    return ::stat(QFile::encodeName(path).constData(), &status) == 0 ? status.st_mode & 07777U : 0;
  }
  /// One line that names the file and says what is wrong.
  void expectComplaint(const char *problem) {
    ASSERT_EQ(log_.warnings().size(), 1) << problem;
    EXPECT_TRUE(log_.warnings().first().contains(path_));
    EXPECT_TRUE(log_.warnings().first().contains(QLatin1String(problem)))
        << qPrintable(log_.warnings().first());
    log_.clear();
  }

  QTemporaryDir folder_;
  QString path_ = folder_.filePath(QStringLiteral("config/tavril/tavril.conf"));
  RecordingLog log_;
  PosixPrivateFiles files_;
  SettingsFile settings_{path_, files_, log_};
};

TEST_F(SettingsFileTest, WithoutAFileThereIsNothingAndNoneIsMade) {
  EXPECT_FALSE(settings_.value("language"));
  EXPECT_TRUE(settings_.remove("language"));
  EXPECT_FALSE(QFileInfo::exists(folder_.filePath(QStringLiteral("config"))));
  EXPECT_TRUE(log_.lines().isEmpty());
}

TEST_F(SettingsFileTest, KeepsWhatItIsGivenUntilItIsRemoved) {
  EXPECT_TRUE(settings_.setValue("language", "zh-Hant"));
  EXPECT_EQ(SettingsFile(path_, files_, log_).value("language"), "zh-Hant");
  EXPECT_FALSE(settings_.value("other"));
  EXPECT_TRUE(settings_.setValue("language", "de"));
  EXPECT_EQ(contentOf(path_), "[General]\nlanguage=de\n");
  EXPECT_TRUE(settings_.remove("language"));
  EXPECT_FALSE(settings_.value("language"));
  EXPECT_TRUE(log_.lines().isEmpty());
}

TEST_F(SettingsFileTest, IsTheUsersAlone) {
  ASSERT_TRUE(settings_.setValue("language", "de"));
  EXPECT_EQ(modeOf(path_), 0600U);
  EXPECT_EQ(modeOf(QFileInfo(path_).path()), 0700U);
}

TEST_F(SettingsFileTest, AFileThatOthersCouldReadIsClosedToThem) {
  writeFile(path_, "[General]\nlanguage=en\n");
  ASSERT_EQ(::chmod(QFile::encodeName(path_).constData(), 0644), 0);
  ASSERT_TRUE(settings_.setValue("language", "de"));
  EXPECT_EQ(modeOf(path_), 0600U);
}

TEST_F(SettingsFileTest, LeavesNothingElseBehind) {
  ASSERT_TRUE(settings_.setValue("language", "de"));
  const QStringList found =
      QFileInfo(path_).dir().entryList(QDir::AllEntries | QDir::Hidden | QDir::NoDotAndDotDot);
  EXPECT_EQ(found, QStringList{"tavril.conf"});
}

TEST_F(SettingsFileTest, ADamagedFileCountsAsEmptyAndIsReplacedByTheNextChoice) {
  for (const QByteArray &damage :
       {QByteArray("\0\xff\xfe\x01 nonsense", 12), QByteArray("this is no settings file\n"),
        QByteArray("[General\nlanguage\n")}) {
    writeFile(path_, damage);
    EXPECT_FALSE(settings_.value("language"));
    expectComplaint("damaged");
    EXPECT_TRUE(settings_.setValue("language", "de"));
    EXPECT_EQ(SettingsFile(path_, files_, log_).value("language"), "de");
    EXPECT_TRUE(log_.lines().isEmpty());
  }
}

TEST_F(SettingsFileTest, WhatIsNoFileIsLeftAlone) {
  ASSERT_TRUE(QDir().mkpath(path_));
  EXPECT_FALSE(settings_.value("language"));
  expectComplaint("not a file");
  EXPECT_FALSE(settings_.setValue("language", "de"));
  expectComplaint("not a file");
  EXPECT_FALSE(settings_.remove("language"));
  expectComplaint("not a file");
}

TEST_F(SettingsFileTest, IsReadThroughALinkButNothingIsWrittenThroughIt) {
  const QString elsewhere = folder_.filePath(QStringLiteral("elsewhere"));
  writeFile(path_, "[General]\nlanguage=de\n");
  ASSERT_TRUE(QFile::rename(path_, elsewhere));
  ASSERT_TRUE(QFile::link(elsewhere, path_));
  EXPECT_EQ(settings_.value("language"), "de");
  EXPECT_TRUE(log_.lines().isEmpty());
  EXPECT_FALSE(settings_.setValue("language", "en"));
  expectComplaint("it is a symbolic link");
  EXPECT_FALSE(settings_.remove("language"));
  expectComplaint("it is a symbolic link");
  EXPECT_EQ(contentOf(path_), "[General]\nlanguage=de\n");
  EXPECT_TRUE(QFileInfo(path_).isSymLink());
}

TEST_F(SettingsFileTest, MakesNoFileWhereALinkToNowhereLeads) {
  const QString nowhere = folder_.filePath(QStringLiteral("nowhere"));
  ASSERT_TRUE(QDir().mkpath(QFileInfo(path_).path()));
  ASSERT_TRUE(QFile::link(nowhere, path_));
  EXPECT_FALSE(settings_.setValue("language", "de"));
  EXPECT_FALSE(QFile::exists(nowhere));
}

TEST_F(SettingsFileTest, DoesNotWaitForAPipe) {
  ASSERT_TRUE(QDir().mkpath(QFileInfo(path_).path()));
  ASSERT_EQ(::mkfifo(QFile::encodeName(path_).constData(), 0600), 0);
  EXPECT_FALSE(settings_.value("language"));
  expectComplaint("not a file");
}

TEST_F(SettingsFileTest, AFileOfUnbearableSizeIsNotRead) {
  writeFile(path_, "[General]\nlanguage=de\n");
  ASSERT_TRUE(QFile::resize(path_, qint64(1) << 40));
  EXPECT_FALSE(settings_.value("language"));
  expectComplaint("larger");
  EXPECT_FALSE(settings_.setValue("language", "en"));
  expectComplaint("larger");
}

TEST_F(SettingsFileTest, AFolderThatCannotBeMadeIsLogged) {
  QFile inTheWay(folder_.filePath(QStringLiteral("config")));
  ASSERT_TRUE(inTheWay.open(QIODevice::WriteOnly));
  EXPECT_FALSE(settings_.setValue("language", "de"));
  expectComplaint("config");
}

TEST_F(SettingsFileTest, WhatCannotBeWrittenHoldsForThisRun) {
  writeFile(path_, "[General]\nlanguage=de\nfolder=/a\n");
  const QString elsewhere = folder_.filePath(QStringLiteral("elsewhere"));
  ASSERT_TRUE(QFile::rename(path_, elsewhere));
  ASSERT_TRUE(QFile::link(elsewhere, path_));  // through which nothing is written
  EXPECT_FALSE(settings_.setValue("language", "fr"));
  EXPECT_EQ(settings_.value("language"), "fr");
  EXPECT_EQ(settings_.value("folder"), "/a");
  EXPECT_FALSE(settings_.remove("folder"));
  EXPECT_FALSE(settings_.value("folder"));
  EXPECT_EQ(SettingsFile(path_, files_, log_).value("language"), "de") << "and not for the next";

  ASSERT_TRUE(QFile::remove(path_));
  ASSERT_TRUE(QFile::rename(elsewhere, path_));
  EXPECT_TRUE(settings_.setValue("language", "ja"));
  EXPECT_TRUE(settings_.setValue("folder", "/b"));
  ASSERT_TRUE(SettingsFile(path_, files_, log_).setValue("language", "ko"));
  EXPECT_EQ(settings_.value("language"), "ko") << "the file has the last word again";
  EXPECT_TRUE(settings_.remove("folder"));
  EXPECT_FALSE(settings_.value("folder"));
}

TEST_F(SettingsFileTest, LiesInTheFolderOfTheUsersSettings) {
  qputenv("XDG_CONFIG_HOME", QFile::encodeName(folder_.path()));
  const QString path = SettingsFile::standardPath();
  qunsetenv("XDG_CONFIG_HOME");
  EXPECT_EQ(path, folder_.filePath(QStringLiteral("tavril/tavril.conf")));
}

}  // namespace
}  // namespace tavril
