#include "tests/support/MemoryUserFiles.h"
#include "tools/TextFile.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

const QString path = QStringLiteral("/home/me/a.txt");

class TextFileTest : public testing::Test {
 protected:
  TextFile read(const QByteArray &bytes) {
    files_.put(path, bytes);
    return TextFile::read(files_, path);
  }

  MemoryUserFiles files_;
};

TEST_F(TextFileTest, GivesTheWholeText) {
  EXPECT_EQ(read("ein \xc3\xbc\r\nzwei\n").text, QString::fromUtf8("ein ü\r\nzwei\n"));
  EXPECT_EQ(read("").text, QString());
  EXPECT_TRUE(read("").text.has_value());
}

TEST_F(TextFileTest, KeepsZeroBytes) {
  EXPECT_EQ(read(QByteArray("a\0b", 3)).text, QString(QLatin1String("a\0b", 3)));
}

TEST_F(TextFileTest, LeavesTheByteOrderMarkOut) {
  EXPECT_EQ(read("\xef\xbb\xbfkey").text, QStringLiteral("key"));
  EXPECT_EQ(read("a\xef\xbb\xbf").text, QString::fromUtf8("a\ufeff")) << "elsewhere it is a character";
}

TEST_F(TextFileTest, AFileThatIsNotUtf8HasNoTextButAProblem) {
  for (const char *bytes : {"\xff", "ok\xc3(\n", "cut off \xe2\x82", "\xed\xa0\x80", "\xc0\x80"}) {
    const TextFile file = read(bytes);
    EXPECT_FALSE(file.text) << bytes;
    EXPECT_EQ(file.problem, path + QStringLiteral(": not valid UTF-8")) << bytes;
  }
}

TEST_F(TextFileTest, AFileThatIsNotThereHasAProblem) {
  const TextFile file = TextFile::read(files_, path);
  EXPECT_FALSE(file.text);
  EXPECT_FALSE(file.problem.isEmpty());
}

TEST_F(TextFileTest, TheLargestSizeIsStillRead) {
  EXPECT_TRUE(read(QByteArray(TextFile::largestSize, 'a')).text);
  EXPECT_FALSE(read(QByteArray(TextFile::largestSize + 1, 'a')).text);
}

}  // namespace
}  // namespace tavril
