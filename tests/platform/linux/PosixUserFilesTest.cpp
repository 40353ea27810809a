#include "platform/linux/PosixUserFiles.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TestFiles.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

#include <sys/stat.h>
#include <unistd.h>

namespace tavril {
namespace {

class PosixUserFilesTest : public testing::Test {
 protected:
  PosixUserFilesTest() { EXPECT_TRUE(folder_.isValid()); }

  QString path(const char *name) const { return folder_.filePath(QString::fromLatin1(name)); }

  void makePipe(const char *name) { ASSERT_EQ(::mkfifo(QFile::encodeName(path(name)).constData(), 0600), 0); }
  void makeLink(const char *name, const QString &target) { ASSERT_TRUE(QFile::link(target, path(name))); }

  static int codeOf(const std::optional<Error> &error) { return error ? error->code : 0; }

  int readError(const QString &path, qsizetype largestSize = 100) {
    return codeOf(files_.read(path, largestSize, bytes_));
  }

  QTemporaryDir folder_;
  PosixUserFiles files_;
  QByteArray bytes_;
};

TEST_F(PosixUserFilesTest, MakesAFolderButNoneAboveIt) {
  EXPECT_EQ(codeOf(files_.makeFolder(path("a"))), 0);
  EXPECT_TRUE(QFileInfo(path("a")).isDir());
  EXPECT_EQ(codeOf(files_.makeFolder(path("a"))), EEXIST);
  EXPECT_EQ(codeOf(files_.makeFolder(path("b/c"))), ENOENT);
}

TEST_F(PosixUserFilesTest, CreatesAnEmptyFileThatOthersMayReadAsTheMaskAllows) {
  const mode_t mask = ::umask(022);
  EXPECT_EQ(codeOf(files_.createEmpty(path("de.h"))), 0);
  ::umask(mask);
  EXPECT_EQ(contentOf(path("de.h")), QByteArray());
  struct stat status {};
  ASSERT_EQ(::stat(QFile::encodeName(path("de.h")).constData(), &status), 0);
  EXPECT_EQ(status.st_mode & 0777, 0644u);
}

TEST_F(PosixUserFilesTest, AnExistingFileIsReplacedByAnEmptyOne) {
  writeFile(path("de.h"), "old");
  EXPECT_EQ(codeOf(files_.createEmpty(path("de.h"))), 0);
  EXPECT_EQ(contentOf(path("de.h")), QByteArray());
}

TEST_F(PosixUserFilesTest, ALinkIsReplacedAndWhatItLeadsToStaysAsItIs) {
  writeFile(path("keys.txt"), "keys");
  makeLink("de.h", path("keys.txt"));
  EXPECT_EQ(codeOf(files_.createEmpty(path("de.h"))), 0);
  EXPECT_FALSE(QFileInfo(path("de.h")).isSymLink());
  EXPECT_EQ(contentOf(path("de.h")), QByteArray());
  EXPECT_EQ(contentOf(path("keys.txt")), QByteArray("keys"));

  ASSERT_EQ(
      ::link(QFile::encodeName(path("keys.txt")).constData(), QFile::encodeName(path("fr.h")).constData()),
      0);
  EXPECT_EQ(codeOf(files_.createEmpty(path("fr.h"))), 0);
  EXPECT_EQ(contentOf(path("fr.h")), QByteArray());
  EXPECT_EQ(contentOf(path("keys.txt")), QByteArray("keys"));
}

TEST_F(PosixUserFilesTest, APipeIsReplacedWithoutWaitingForIt) {
  makePipe("de.h");
  EXPECT_EQ(codeOf(files_.createEmpty(path("de.h"))), 0);
  EXPECT_TRUE(QFileInfo(path("de.h")).isFile());
}

TEST_F(PosixUserFilesTest, NoFileIsCreatedInPlaceOfAFolderOrInNone) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("de.h")));
  EXPECT_EQ(codeOf(files_.createEmpty(path("de.h"))), EISDIR);
  EXPECT_EQ(codeOf(files_.createEmpty(path("nowhere/de.h"))), ENOENT);
  EXPECT_EQ(codeOf(files_.createEmpty(path("keys.txt/de.h"))), ENOENT);
}

TEST_F(PosixUserFilesTest, ReadsAWholeFileAlsoThroughALink) {
  writeFile(path("keys.txt"), QByteArray("a\0b\n", 4));
  makeLink("link.txt", path("keys.txt"));
  EXPECT_EQ(readError(path("keys.txt")), 0);
  EXPECT_EQ(bytes_, QByteArray("a\0b\n", 4));
  bytes_ = "before";
  EXPECT_EQ(readError(path("link.txt")), 0);
  EXPECT_EQ(bytes_, QByteArray("a\0b\n", 4));
}

TEST_F(PosixUserFilesTest, WhatIsNoFileIsNotReadAndNotWaitedFor) {
  makePipe("pipe.txt");
  EXPECT_EQ(readError(path("pipe.txt")), EINVAL);
  EXPECT_EQ(readError(folder_.path()), EISDIR);
  EXPECT_EQ(readError(QStringLiteral("/dev/zero")), EINVAL);
  EXPECT_EQ(readError(path("nothing.txt")), ENOENT);
  makeLink("loop.txt", path("loop.txt"));
  EXPECT_EQ(readError(path("loop.txt")), ELOOP);
  EXPECT_EQ(bytes_, QByteArray());
}

TEST_F(PosixUserFilesTest, AFileOfAGigabyteIsRefusedWithoutBeingRead) {
  QFile file(path("huge.txt"));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  ASSERT_TRUE(file.resize(qint64(1) << 30));
  EXPECT_EQ(readError(file.fileName(), 16 * 1024 * 1024), EFBIG);
  EXPECT_EQ(bytes_.capacity(), 0);
}

TEST_F(PosixUserFilesTest, TheLargestSizeIsStillRead) {
  writeFile(path("keys.txt"), QByteArray(100, 'a'));
  EXPECT_EQ(readError(path("keys.txt"), 100), 0);
  EXPECT_EQ(readError(path("keys.txt"), 99), EFBIG);
  // Files of the kernel say that they are empty, whatever they hold.
  EXPECT_EQ(readError(QStringLiteral("/proc/self/status"), 10), EFBIG);
}

TEST_F(PosixUserFilesTest, WritesIntoAFileThatIsThere) {
  writeFile(path("de.h"), "something longer");
  EXPECT_EQ(codeOf(files_.write(path("de.h"), "new")), 0);
  EXPECT_EQ(contentOf(path("de.h")), QByteArray("new"));
}

TEST_F(PosixUserFilesTest, DoesNotWriteWhereThereIsNoFile) {
  writeFile(path("keys.txt"), "keys");
  makeLink("link.h", path("keys.txt"));
  makePipe("pipe.h");
  EXPECT_EQ(codeOf(files_.write(path("none.h"), "new")), ENOENT);
  EXPECT_EQ(codeOf(files_.write(folder_.path(), "new")), EISDIR);
  EXPECT_EQ(codeOf(files_.write(path("link.h"), "new")), ELOOP);
  EXPECT_EQ(codeOf(files_.write(path("pipe.h"), "new")), ENXIO) << "nobody reads from it";
  EXPECT_EQ(codeOf(files_.write(QStringLiteral("/dev/full"), "new")), EINVAL);
  EXPECT_EQ(contentOf(path("keys.txt")), QByteArray("keys"));
}

TEST_F(PosixUserFilesTest, AWriteThatFindsNoRoomIsAnError) {
  writeFile(path("de.h"), {});
  const FileSizeLimit limit(10);
  EXPECT_EQ(codeOf(files_.write(path("de.h"), QByteArray(20, 'a'))), EFBIG);
}

TEST_F(PosixUserFilesTest, RemovesFilesLinksAndEmptyFolders) {
  writeFile(path("keys.txt"), "keys");
  writeFile(path("de.h"), "table");
  makeLink("link.h", path("keys.txt"));
  makeLink("dangling.h", path("nothing"));
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("folder.h")));
  for (const char *name : {"de.h", "link.h", "dangling.h", "folder.h"}) {
    EXPECT_TRUE(files_.isDeletable(path(name))) << name;
    EXPECT_EQ(codeOf(files_.remove(path(name))), 0) << name;
    EXPECT_FALSE(files_.isDeletable(path(name))) << name;
  }
  EXPECT_EQ(contentOf(path("keys.txt")), QByteArray("keys"));
}

TEST_F(PosixUserFilesTest, AFolderWithSomethingInItIsNotRemoved) {
  ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("folder.h/inner")));
  EXPECT_EQ(codeOf(files_.remove(path("folder.h"))), ENOTEMPTY);
  EXPECT_TRUE(QFileInfo::exists(path("folder.h/inner")));
}

/// Ends the process with 0 when the check holds for a user without privileges.
template <typename Check>
[[noreturn]] void checkWithoutPrivileges(Check check) {
  constexpr uid_t nobody = 65534;
  if (::geteuid() == 0 && (::setgid(nobody) != 0 || ::setuid(nobody) != 0)) ::_exit(2);
  ::_exit(check() ? 0 : 1);
}

TEST_F(PosixUserFilesTest, AFolderWithoutWritePermissionKeepsItsFilesAndGetsNone) {
  writeFile(path("de.h"), "table");
  ASSERT_EQ(::chmod(QFile::encodeName(path("de.h")).constData(), 0644), 0);
  ASSERT_EQ(::chmod(QFile::encodeName(folder_.path()).constData(), 0555), 0);
  EXPECT_EXIT(checkWithoutPrivileges([&] {
                return !files_.isDeletable(path("de.h")) && codeOf(files_.remove(path("de.h"))) == EACCES &&
                       codeOf(files_.createEmpty(path("fr.h"))) == EACCES &&
                       codeOf(files_.makeFolder(path("sub"))) == EACCES &&
                       codeOf(files_.read(path("de.h"), 100, bytes_)) == 0;
              }),
              testing::ExitedWithCode(0), "");
  ASSERT_EQ(::chmod(QFile::encodeName(folder_.path()).constData(), 0755), 0);
  EXPECT_EQ(contentOf(path("de.h")), QByteArray("table"));
}

TEST_F(PosixUserFilesTest, AnUnreadableFileIsAnError) {
  writeFile(path("keys.txt"), "keys");
  ASSERT_EQ(::chmod(QFile::encodeName(folder_.path()).constData(), 0755), 0);
  ASSERT_EQ(::chmod(QFile::encodeName(path("keys.txt")).constData(), 0), 0);
  EXPECT_EXIT(checkWithoutPrivileges([&] { return readError(path("keys.txt")) == EACCES; }),
              testing::ExitedWithCode(0), "");
}

TEST_F(PosixUserFilesTest, OthersFilesInASharedFolderCannotBeDeleted) {
  // Under root the file is root's; a plain user has no folder of somebody else to put files of his own into.
  writeFile(path("de.h"), "table");
  ASSERT_EQ(::chmod(QFile::encodeName(folder_.path()).constData(), 01777), 0);
  const bool own = ::geteuid() != 0;
  EXPECT_EXIT(checkWithoutPrivileges([&] { return files_.isDeletable(path("de.h")) == own; }),
              testing::ExitedWithCode(0), "");
}

TEST_F(PosixUserFilesTest, NamesAllThatIsInAFolderSorted) {
  writeFile(path("b.h"), {});
  writeFile(path("a.txt"), {});
  writeFile(path(".hidden.h"), {});
  makeLink("c.h", path("nothing"));
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("d.h")));
  EXPECT_EQ(files_.names(folder_.path()), QStringList({".hidden.h", "a.txt", "b.h", "c.h", "d.h"}));
}

TEST_F(PosixUserFilesTest, NamesNothingOfWhatIsNoFolder) {
  writeFile(path("a.txt"), {});
  EXPECT_EQ(files_.names(path("a.txt")), QStringList());
  EXPECT_EQ(files_.names(path("nowhere")), QStringList());
  EXPECT_EQ(files_.names({}), QStringList());
}

}  // namespace
}  // namespace tavril
