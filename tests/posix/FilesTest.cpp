#include "posix/Files.h"
#include "tests/support/Pty.h"

#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <string>
#include <utility>

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

namespace tavril::posix {
namespace {

bool isOpen(int descriptor) {
  return ::fcntl(descriptor, F_GETFD) >= 0;
}

TEST(Descriptor, IsClosedOnceByItsLastOwner) {
  int number = -1;
  {
    Descriptor first = openFile("/dev/null", O_RDONLY);
    number = first.get();
    ASSERT_TRUE(isOpen(number));
    Descriptor second(std::move(first));
    {
      Descriptor third = openFile("/dev/null", O_RDONLY);
      const int other = third.get();
      third = std::move(second);
      EXPECT_EQ(third.get(), number);
      EXPECT_EQ(second.get(), other) << "assigning exchanges the two";
      second = std::move(third);
    }
    EXPECT_TRUE(isOpen(number));
  }
  EXPECT_FALSE(isOpen(number));
}

TEST(Descriptor, ThatHoldsNoneIsNotOpen) {
  EXPECT_FALSE(Descriptor().isOpen());
  errno = 0;
  EXPECT_FALSE(openFile("/nowhere/at/all", O_RDONLY).isOpen());
  EXPECT_EQ(errno, ENOENT);
}

class PosixFiles : public testing::Test {
 protected:
  std::string at(const char *name) const { return folder.filePath(QString::fromLatin1(name)).toStdString(); }
  QString names() const {
    return QDir(folder.path())
        .entryList(QDir::AllEntries | QDir::Hidden | QDir::System | QDir::NoDotAndDotDot)
        .join(u' ');
  }
  static mode_t modeOf(const std::string &path) {
    struct stat status {};
    EXPECT_EQ(::lstat(path.c_str(), &status), 0) << path;
    return status.st_mode;
  }
  static void put(const std::string &path, std::string_view bytes) {
    const Descriptor file = openFile(path, O_WRONLY | O_CREAT, 0600);
    ASSERT_EQ(writeAll(file.get(), bytes), 0);
  }
  int read(const std::string &path, Links links = Links::Followed, std::size_t largest = 100) {
    return readRegularFile(path, links, largest, bytes);
  }

  QTemporaryDir folder;
  std::string bytes = "before";
};

TEST_F(PosixFiles, AreReadWholeUpToTheLargestSize) {
  put(at("file"), "12345");
  EXPECT_EQ(read(at("file"), Links::Refused, 5), 0);
  EXPECT_EQ(bytes, "12345");
  EXPECT_EQ(read(at("file"), Links::Refused, 4), EFBIG);
  EXPECT_EQ(bytes, "");
  EXPECT_EQ(read(at("none")), ENOENT);
}

TEST_F(PosixFiles, AreReadThroughLinksOnlyIfTheseAreFollowed) {
  put(at("file"), "content");
  ASSERT_EQ(::symlink(at("file").c_str(), at("link").c_str()), 0);
  EXPECT_EQ(read(at("link"), Links::Refused), ELOOP);
  EXPECT_EQ(read(at("link"), Links::Followed), 0);
  EXPECT_EQ(bytes, "content");
  ASSERT_EQ(::symlink(at("none").c_str(), at("dangling").c_str()), 0);
  EXPECT_EQ(read(at("dangling"), Links::Refused), ELOOP);
  EXPECT_EQ(read(at("dangling"), Links::Followed), ENOENT);
}

TEST_F(PosixFiles, ThatAreNotRegularAreNeitherReadNorWaitedFor) {
  ASSERT_EQ(::mkfifo(at("pipe").c_str(), 0600), 0);
  const Pty terminal;
  EXPECT_EQ(read(at("pipe")), EINVAL);
  EXPECT_EQ(read(terminal.path().toStdString()), EINVAL);
  EXPECT_EQ(read(folder.path().toStdString()), EISDIR);
  Descriptor file;
  EXPECT_EQ(openRegularFile("/dev/null", O_WRONLY, file), EINVAL);
  EXPECT_FALSE(file.isOpen());
}

TEST_F(PosixFiles, AreReplacedOnceTheyAreComplete) {
  put(at("file"), "old");
  const mode_t mask = ::umask(027);
  ReplacementFile file(at("file"), 0644);
  ::umask(mask);
  ASSERT_EQ(file.error(), 0);
  EXPECT_EQ(names().size(), QStringLiteral(".file.XXXXXX file").size());
  ASSERT_EQ(file.write("new"), 0);
  EXPECT_EQ(read(at("file")), 0);
  EXPECT_EQ(bytes, "old");
  EXPECT_EQ(file.takePlace(), 0);
  EXPECT_EQ(read(at("file")), 0);
  EXPECT_EQ(bytes, "new");
  EXPECT_EQ(modeOf(at("file")), S_IFREG | 0640U);
  EXPECT_EQ(names(), QStringLiteral("file"));
}

TEST_F(PosixFiles, StayAsTheyWereIfTheNewOneDoesNotTakeTheirPlace) {
  put(at("file"), "old");
  ASSERT_EQ(::mkdir(at("sub").c_str(), 0700), 0);
  {
    ReplacementFile dropped(at("file"), 0600);
    ASSERT_EQ(dropped.write("new"), 0);
    ReplacementFile ofAFolder(at("sub"), 0600);
    ASSERT_EQ(ofAFolder.write("new"), 0);
    EXPECT_EQ(ofAFolder.takePlace(), EISDIR);
  }
  EXPECT_EQ(ReplacementFile(at("none/file"), 0600).error(), ENOENT);
  EXPECT_EQ(read(at("file")), 0);
  EXPECT_EQ(bytes, "old");
  EXPECT_EQ(names(), QStringLiteral("file sub"));
}

}  // namespace
}  // namespace tavril::posix
