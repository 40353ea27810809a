#include "platform/linux/PosixPrivateFiles.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TestFiles.h"
#include "tests/support/WaitFor.h"

#include <QDir>
#include <QFile>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>

#include <fcntl.h>
#include <signal.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavril {
namespace {

constexpr qsizetype limit = 1 << 26;

class PrivateFolder : public testing::Test {
 protected:
  QString at(const char *name) const { return folder.filePath(QString::fromLatin1(name)); }

  static mode_t modeOf(const QString &path) {
    struct stat status {};
    EXPECT_EQ(::lstat(QFile::encodeName(path).constData(), &status), 0) << qPrintable(path);
    return status.st_mode;
  }
  QStringList names() const {
    return QDir(folder.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot);
  }
  static void expectPosix(const std::optional<Error> &error, int number) {
    ASSERT_TRUE(error.has_value());
    EXPECT_EQ(error->domain, QStringLiteral("POSIX"));
    EXPECT_EQ(error->code, number) << qPrintable(error->localizedDescription);
  }

  QTemporaryDir folder;
  PosixPrivateFiles files;
  std::optional<QByteArray> bytes;
};

TEST_F(PrivateFolder, IsMadeWithThoseAboveItForTheUserAlone) {
  EXPECT_FALSE(files.makeFolder(at("a/b/c")));
  for (const char *name : {"a", "a/b", "a/b/c"}) EXPECT_EQ(modeOf(at(name)), S_IFDIR | 0700u) << name;
  EXPECT_FALSE(files.makeFolder(at("a/b/c")));
}

TEST_F(PrivateFolder, ThatIsThereAlreadyKeepsItsMode) {
  ASSERT_EQ(::mkdir(QFile::encodeName(at("a")).constData(), 0755), 0);
  EXPECT_FALSE(files.makeFolder(at("a")));
  EXPECT_EQ(modeOf(at("a")), S_IFDIR | 0755u);
}

TEST_F(PrivateFolder, CannotBeMadeBelowAFileOrInItsPlace) {
  writeFile(at("file"), "x");
  expectPosix(files.makeFolder(at("file")), ENOTDIR);
  expectPosix(files.makeFolder(at("file/a/b")), ENOTDIR);
  EXPECT_EQ(contentOf(at("file")), "x");
}

TEST_F(PrivateFolder, CannotBeMadeWhereThereIsALinkToNowhere) {
  ASSERT_TRUE(QFile::link(at("nowhere"), at("link")));
  expectPosix(files.makeFolder(at("link")), ENOTDIR);
  EXPECT_EQ(names(), QStringList{QStringLiteral("link")});
}

TEST_F(PrivateFolder, CannotBeMadeByAnybodyWhereTheKernelKeepsItsOwnFiles) {
  expectPosix(files.makeFolder(QStringLiteral("/proc/self/tavril")), ENOENT);
}

TEST_F(PrivateFolder, ReadsAWholeFileAndKnowsThatThereIsNone) {
  writeFile(at("file"), "content");
  EXPECT_FALSE(files.read(at("file"), limit, bytes));
  EXPECT_EQ(bytes, QByteArray("content"));
  EXPECT_FALSE(files.read(at("none"), limit, bytes));
  EXPECT_FALSE(bytes.has_value());
  writeFile(at("empty"), "");
  EXPECT_FALSE(files.read(at("empty"), limit, bytes));
  EXPECT_EQ(bytes, QByteArray(""));
}

TEST_F(PrivateFolder, ReadsNothingButRegularFilesOfBearableSize) {
  writeFile(at("file"), "12345");
  expectPosix(files.read(at("file"), 4, bytes), EFBIG);
  EXPECT_FALSE(bytes.has_value());
  EXPECT_FALSE(files.read(at("file"), 5, bytes));
  expectPosix(files.read(folder.path(), limit, bytes), EISDIR);
  expectPosix(files.read(QStringLiteral("/dev/full"), limit, bytes), EINVAL);
  ASSERT_EQ(::mkfifo(QFile::encodeName(at("pipe")).constData(), 0600), 0);
  expectPosix(files.read(at("pipe"), limit, bytes), EINVAL);
  ASSERT_TRUE(QFile::link(at("file"), at("link")));
  expectPosix(files.read(at("link"), limit, bytes), ELOOP);
  expectPosix(files.read(at("file/below"), limit, bytes), ENOTDIR);
}

TEST_F(PrivateFolder, NoticesThatAFileIsLongerThanItSays) {
  // Files of the kernel have length 0 until they are read.
  expectPosix(files.read(QStringLiteral("/proc/self/status"), 10, bytes), EFBIG);
}

TEST_F(PrivateFolder, ReplacesAFileForTheUserAloneAndLeavesNothingElse) {
  EXPECT_FALSE(files.replace(at("file"), "one"));
  EXPECT_EQ(contentOf(at("file")), "one");
  EXPECT_EQ(modeOf(at("file")), S_IFREG | 0600u);
  ASSERT_EQ(::chmod(QFile::encodeName(at("file")).constData(), 0644), 0);
  EXPECT_FALSE(files.replace(at("file"), "two"));
  EXPECT_EQ(contentOf(at("file")), "two");
  EXPECT_EQ(modeOf(at("file")), S_IFREG | 0600u);
  EXPECT_EQ(names(), QStringList{QStringLiteral("file")});
}

TEST_F(PrivateFolder, ReplacesALinkAndNotWhatItLeadsTo) {
  writeFile(at("elsewhere"), "precious");
  ASSERT_TRUE(QFile::link(at("elsewhere"), at("file")));
  EXPECT_FALSE(files.replace(at("file"), "new"));
  EXPECT_EQ(contentOf(at("elsewhere")), "precious");
  EXPECT_EQ(modeOf(at("file")), S_IFREG | 0600u);
  EXPECT_EQ(contentOf(at("file")), "new");
}

TEST_F(PrivateFolder, KeepsTheOldContentWhenTheNewOneDoesNotFitOnTheDisk) {
  const QByteArray old(10'000, 'a');
  ASSERT_FALSE(files.replace(at("file"), old));
  {
    const FileSizeLimit full(4096);
    expectPosix(files.replace(at("file"), QByteArray(20'000, 'b')), EFBIG);
  }
  EXPECT_EQ(contentOf(at("file")), old);
  EXPECT_EQ(names(), QStringList{QStringLiteral("file")});
}

TEST_F(PrivateFolder, ReplacesNothingThatIsNoFile) {
  expectPosix(files.replace(at("none/file"), "x"), ENOENT);
  writeFile(at("file"), "x");
  expectPosix(files.replace(at("file/below"), "y"), ENOTDIR);
  ASSERT_TRUE(QDir(folder.path()).mkdir(QStringLiteral("sub")));
  expectPosix(files.replace(at("sub"), "y"), EISDIR);
  EXPECT_EQ(names(), (QStringList{QStringLiteral("file"), QStringLiteral("sub")}));
}

TEST_F(PrivateFolder, LosesNothingWhenKilledInTheMiddleOfWriting) {
  const QByteArray old(10'000, 'a');
  ASSERT_FALSE(files.replace(at("file"), old));
  const pid_t child = ::fork();
  if (child == 0) {
    // The kernel kills whoever writes beyond this, so the child dies with a part of the content written.
    const rlimit none{0, 0};
    const rlimit small{4096, 4096};
    ::signal(SIGXFSZ, SIG_DFL);
    if (::setrlimit(RLIMIT_CORE, &none) != 0 || ::setrlimit(RLIMIT_FSIZE, &small) != 0) ::_exit(2);
    (void)PosixPrivateFiles().replace(at("file"), QByteArray(20'000, 'b'));
    ::_exit(1);
  }
  ASSERT_GT(child, 0);
  int status = 0;
  ASSERT_EQ(::waitpid(child, &status, 0), child);
  ASSERT_TRUE(WIFSIGNALED(status));
  EXPECT_EQ(WTERMSIG(status), SIGXFSZ);
  EXPECT_EQ(contentOf(at("file")), old);
  ASSERT_EQ(names().size(), 2) << "the part that was written is still there";

  EXPECT_FALSE(files.replace(at("file"), "after"));
  EXPECT_EQ(contentOf(at("file")), "after");
  EXPECT_EQ(names(), QStringList{QStringLiteral("file")});
}

TEST_F(PrivateFolder, HoldsOneOfTheContentsWheneverTheWriterIsKilled) {
  const QByteArray one(3'000'000, 'a');
  const QByteArray two(3'000'000, 'b');
  for (int round = 0; round < 8; ++round) {
    ASSERT_FALSE(files.replace(at("file"), one));
    ASSERT_EQ(names().size(), 1) << "the round before has left something";
    const pid_t child = ::fork();
    if (child == 0) {
      PosixPrivateFiles writer;
      for (;;) {
        (void)writer.replace(at("file"), two);
        (void)writer.replace(at("file"), one);
      }
    }
    ASSERT_GT(child, 0);
    // A new file stands beside the old one: the child is at it.
    const bool writing = waitFor([&] { return names().size() > 1; });
    ASSERT_EQ(::kill(child, SIGKILL), 0);
    ASSERT_EQ(::waitpid(child, nullptr, 0), child);
    ASSERT_TRUE(writing);
    const QByteArray found = contentOf(at("file"));
    EXPECT_TRUE(found == one || found == two) << "round " << round << ", " << found.size() << " bytes";
  }
}

TEST_F(PrivateFolder, RemovesOnlyLeftoversOfTheSameFileThatNobodyWrites) {
  writeFile(at(".file.abcdef"), "leftover");
  writeFile(at(".file.abcdefg"), "longer name");
  writeFile(at(".file.bak"), "shorter name");
  writeFile(at(".other.abcdef"), "of another file");
  writeFile(at(".file.locked"), "being written");
  const int writer = ::open(QFile::encodeName(at(".file.locked")).constData(), O_RDONLY | O_CLOEXEC);
  ASSERT_GE(writer, 0);
  ASSERT_EQ(::flock(writer, LOCK_EX), 0);
  EXPECT_FALSE(files.replace(at("file"), "x"));
  ::close(writer);
  QStringList left = names();
  left.sort();
  EXPECT_EQ(left.join(u' '), QStringLiteral(".file.abcdefg .file.bak .file.locked .other.abcdef file"));
}

}  // namespace
}  // namespace tavril
