#include "posix/LineFile.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/ProcessCounts.h"
#include "tests/support/TestFiles.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <cstddef>
#include <memory>
#include <string>
#include <thread>

namespace tavril::posix {
namespace {

using Step = FileError::Step;

constexpr std::chrono::milliseconds atOnce{0};

class LineFileTest : public testing::Test {
 protected:
  FileError failed(Step step, int number) const { return {step, number, path_}; }
  QByteArray content() const { return contentOf(QFile::decodeName(path_.c_str())); }
  void write(const QByteArray &bytes) const { writeFile(QFile::decodeName(path_.c_str()), bytes); }

  QTemporaryDir folder_;
  std::string path_ = QFile::encodeName(folder_.filePath(QStringLiteral("a/b/lines"))).toStdString();
};

TEST_F(LineFileTest, IsReadFromAnyByteOn) {
  write("one\ntwo\n");
  LineFile file(path_);
  ASSERT_EQ(file.openToRead(), FileError());
  std::string bytes;
  EXPECT_EQ(file.readFrom(4, bytes), FileError());
  EXPECT_EQ(bytes, "two\n");
  EXPECT_EQ(file.readFrom(0, bytes), FileError());
  EXPECT_EQ(bytes, "one\ntwo\n");
  for (const int beyond : {8, 9}) {
    EXPECT_EQ(file.readFrom(beyond, bytes), FileError());
    EXPECT_EQ(bytes, "");
  }
  EXPECT_EQ(file.readFrom(-1, bytes), failed(Step::Read, EINVAL));
}

TEST_F(LineFileTest, ThatIsMissingIsMadeOnlyToAppend) {
  EXPECT_EQ(LineFile(path_).openToRead(), failed(Step::Open, ENOENT));
  LineFile file(path_);
  ASSERT_EQ(file.openToAppend(atOnce), FileError());
  EXPECT_EQ(file.append("one\n"), FileError());
  EXPECT_EQ(content(), "one\n");
}

TEST_F(LineFileTest, OnlyOneCanAppendAtATime) {
  {
    LineFile first(path_);
    ASSERT_EQ(first.openToAppend(atOnce), FileError());
    EXPECT_EQ(LineFile(path_).openToAppend(atOnce), failed(Step::Lock, EWOULDBLOCK));
    EXPECT_EQ(LineFile(path_).openToRead(), FileError());
  }
  EXPECT_EQ(LineFile(path_).openToAppend(atOnce), FileError());
}

TEST_F(LineFileTest, ThatWasRemovedWhileWaitingForItIsMadeAnew) {
  auto first = std::make_unique<LineFile>(path_);
  ASSERT_EQ(first->openToAppend(atOnce), FileError());
  LineFile second(path_);
  FileError error{Step::Open, 0, {}};
  const std::size_t descriptors = process::descriptors();
  std::thread waiting([&] { error = second.openToAppend(std::chrono::minutes(1)); });
  while (process::descriptors() == descriptors) std::this_thread::yield();
  QFile::remove(QFile::decodeName(path_.c_str()));
  first.reset();
  waiting.join();
  ASSERT_EQ(error, FileError());
  EXPECT_EQ(second.append("one\n"), FileError());
  EXPECT_EQ(content(), "one\n");
}

TEST_F(LineFileTest, IsAsBeforeIfAppendingFails) {
  write("one\n");
  LineFile file(path_);
  ASSERT_EQ(file.openToAppend(atOnce), FileError());
  {
    const FileSizeLimit full(6);
    EXPECT_EQ(file.append("two\n"), failed(Step::Write, EFBIG));
  }
  EXPECT_EQ(content(), "one\n");
}

}  // namespace
}  // namespace tavril::posix
