#include "records/HistoryFile.h"
#include "tests/records/HistoryBench.h"
#include "tests/support/ChildProcess.h"
#include "tests/support/FileSizeLimit.h"
#include "tests/support/TestFiles.h"

#include <QByteArray>
#include <QDir>
#include <QFile>
#include <QString>
#include <QStringList>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <cerrno>
#include <chrono>
#include <numeric>
#include <string>
#include <utility>
#include <vector>

#include <fcntl.h>
#include <sys/file.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

namespace tavril::records {
namespace {

using posix::FileError;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr std::chrono::milliseconds shortPatience{20};

class HistoryFileTest : public testing::Test {
 protected:
  QByteArray content() const { return contentOf(path_); }
  void write(const std::string &text) const { writeFile(path_, QByteArray::fromStdString(text)); }
  std::string path() const { return QFile::encodeName(path_).toStdString(); }
  FileError failed(FileError::Step step, int number) const { return {step, number, path()}; }

  LineNumber append(HistoryFile &file, const RawSettings &settings = someSettings) const {
    const HistoryFile::Appended appended = file.append(entryWith(settings));
    EXPECT_EQ(appended.error, FileError());
    return appended.number;
  }
  HistoryFile opened() const {
    HistoryFile file(path());
    EXPECT_EQ(file.refresh(), FileError());
    return file;
  }

  QTemporaryDir folder_;
  QString path_ = folder_.filePath(QStringLiteral("data/tavril/history.jsonl"));
};

TEST_F(HistoryFileTest, ThatIsNotThereIsEmptyAndIsNotMade) {
  HistoryFile file(path());
  EXPECT_EQ(file.refresh(), FileError());
  EXPECT_THAT(file.book().entries(), IsEmpty());
  EXPECT_THAT(QDir(folder_.path()).entryList(QDir::NoDotAndDotDot | QDir::AllEntries), IsEmpty());
}

TEST_F(HistoryFileTest, IsMadeForTheUserAloneWithItsFolders) {
  const mode_t mask = ::umask(0);
  HistoryFile file(path());
  append(file);
  ::umask(mask);
  struct stat status {};
  for (const auto &[name, mode] : {std::pair("data", S_IFDIR | 0700U),
                                   {"data/tavril", S_IFDIR | 0700U},
                                   {"data/tavril/history.jsonl", S_IFREG | 0600U}}) {
    ASSERT_EQ(::stat(QFile::encodeName(folder_.filePath(QString::fromLatin1(name))).constData(), &status), 0);
    EXPECT_EQ(status.st_mode, mode) << name;
  }
}

TEST_F(HistoryFileTest, HoldsALineForWhatIsAppendedAndNothingElse) {
  HistoryFile file(path());
  EXPECT_EQ(append(file), 1);
  EXPECT_EQ(file.append(NameLine{0, someTime, "left hip", {1}}).number, 2);
  EXPECT_EQ(content().toStdString(),
            numbered(entryWith(someSettings), 1) + numbered(NameLine{0, someTime, "left hip", {1}}, 2));
  EXPECT_EQ(file.book().nameOf(1), "left hip");
  EXPECT_EQ(opened().book().nameOf(1), "left hip");
}

TEST_F(HistoryFileTest, IsReadOnFromWhereItWasRead) {
  HistoryFile reader(path());
  HistoryFile writer(path());
  for (int kp = 1; kp <= 3; ++kp) {
    append(writer, settingsWith(9, kp));
    EXPECT_EQ(reader.refresh(), FileError());
    EXPECT_EQ(reader.book().newest()->settings, settingsWith(9, kp));
    EXPECT_EQ(reader.book().entries().size(), static_cast<std::size_t>(kp));
  }
  EXPECT_EQ(reader.refresh(), FileError());
  EXPECT_EQ(reader.book().entries().size(), 3U);
}

TEST_F(HistoryFileTest, NumbersOnFromWhatOthersAppended) {
  HistoryFile one(path());
  HistoryFile other(path());
  EXPECT_EQ(append(one), 1);
  EXPECT_EQ(append(other), 2);
  EXPECT_EQ(append(other), 3);
  EXPECT_EQ(append(one), 4);
  EXPECT_EQ(one.book().entries().size(), 4U);
}

TEST_F(HistoryFileTest, IsReadAnewIfItWasReplacedEmptiedOrRemoved) {
  HistoryFile file(path());
  for (int i = 0; i < 3; ++i) append(file);
  QFile::remove(path_);
  write(numbered(entryWith(settingsWith(9, 1)), 7));
  EXPECT_EQ(file.refresh(), FileError());
  EXPECT_EQ(file.book().newest()->number, 7);
  EXPECT_EQ(file.book().entries().size(), 1U);

  // With a content of the same length, and in the same file, shorter and longer.
  QFile::remove(path_);
  write(numbered(entryWith(settingsWith(9, 2)), 8));
  EXPECT_EQ(file.refresh(), FileError());
  EXPECT_EQ(file.book().newest()->number, 8);
  EXPECT_EQ(file.book().entries().size(), 1U);
  write("");
  EXPECT_EQ(file.refresh(), FileError());
  EXPECT_THAT(file.book().entries(), IsEmpty());
  append(file);
  write(numbered(NameLine{0, someTime, std::string(1000, 'x'), {}}, 1) +
        numbered(entryWith(someSettings), 2));
  EXPECT_EQ(file.refresh(), FileError());
  EXPECT_EQ(file.book().newest()->number, 2);
  EXPECT_THAT(file.book().remarks(), IsEmpty());

  QFile::remove(path_);
  EXPECT_EQ(file.refresh(), FileError());
  EXPECT_THAT(file.book().entries(), IsEmpty());
  EXPECT_EQ(append(file), 1);
}

TEST_F(HistoryFileTest, WithEmptyLinesIsReadOn) {
  write("\n");
  HistoryFile file = opened();
  EXPECT_EQ(append(file), 2);
  write(content().toStdString() + "\n");
  EXPECT_EQ(file.refresh(), FileError());
  EXPECT_EQ(append(file), 4);
  EXPECT_EQ(file.book().entries().size(), 2U);
  EXPECT_THAT(file.book().remarks(),
              ElementsAre(HistoryRemark{1, LineProblem::Damaged}, HistoryRemark{3, LineProblem::Damaged}));
}

TEST_F(HistoryFileTest, GoesOnOnANewLineAfterATornOne) {
  const std::string first = numbered(entryWith(someSettings), 1);
  write(first + "{\"format\":1,\"ki");
  HistoryFile file = opened();
  EXPECT_THAT(file.book().remarks(), ElementsAre(HistoryRemark{2, LineProblem::Torn}));
  EXPECT_EQ(append(file), 3);
  EXPECT_THAT(file.book().remarks(), ElementsAre(HistoryRemark{2, LineProblem::Damaged}));
  EXPECT_EQ(content().toStdString(), first + "{\"format\":1,\"ki\n" + numbered(entryWith(someSettings), 3));
  EXPECT_EQ(opened().book().entries().size(), 2U);
}

TEST_F(HistoryFileTest, TakesALineThatLacksNothingButItsEndOnceTheNextFollows) {
  const std::string first = numbered(entryWith(someSettings), 1);
  write(first.substr(0, first.size() - 1));
  HistoryFile file = opened();
  EXPECT_THAT(file.book().entries(), IsEmpty());
  EXPECT_EQ(append(file), 2);
  EXPECT_EQ(file.book().entries().size(), 2U);
  EXPECT_THAT(file.book().remarks(), IsEmpty());
}

TEST_F(HistoryFileTest, TakesNothingThatItCouldNotReadBack) {
  HistoryFile file(path());
  const FileError refused = failed(FileError::Step::Write, EINVAL);
  EXPECT_EQ(file.append(entryWith(settingsWith(9, 1 << 20))).error, refused);
  EXPECT_EQ(file.append(PlanEndLine{0, someTime, 0, PlanOutcome::Done, ""}).error, refused);
  write(numbered(entryWith(someSettings), (LineNumber{1} << 53) - 1));
  EXPECT_EQ(file.append(entryWith(someSettings)).error, refused) << "there is no further number";
}

TEST_F(HistoryFileTest, IsNotReachedThroughALink) {
  const QString target = folder_.filePath(QStringLiteral("target"));
  writeFile(target, "");
  ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("data/tavril")));
  ASSERT_TRUE(QFile::link(target, path_));
  HistoryFile file(path());
  EXPECT_EQ(file.refresh(), failed(FileError::Step::Open, ELOOP));
  EXPECT_EQ(file.append(entryWith(someSettings)).error, failed(FileError::Step::Open, ELOOP));
  EXPECT_EQ(contentOf(target), "");
}

TEST_F(HistoryFileTest, IsARegularFile) {
  ASSERT_TRUE(QDir(folder_.path()).mkpath(path_));
  HistoryFile file(path());
  EXPECT_EQ(file.refresh(), failed(FileError::Step::Open, EISDIR));
  EXPECT_EQ(file.append(entryWith(someSettings)).error.step, FileError::Step::Open);
}

TEST_F(HistoryFileTest, IsNotMadeBelowAFile) {
  writeFile(folder_.filePath(QStringLiteral("data")), "");
  HistoryFile file(path());
  EXPECT_EQ(file.append(entryWith(someSettings)).error,
            (FileError{FileError::Step::MakeFolder, ENOTDIR,
                       QFile::encodeName(folder_.filePath(QStringLiteral("data"))).toStdString()}));
}

TEST_F(HistoryFileTest, IsNotWaitedForWithoutEnd) {
  HistoryFile patient(path());
  HistoryFile impatient(path());
  append(patient);
  const int descriptor = ::open(path().c_str(), O_RDONLY | O_CLOEXEC);
  ASSERT_EQ(::flock(descriptor, LOCK_EX), 0);
  EXPECT_EQ(impatient.append(entryWith(someSettings), shortPatience).error,
            failed(FileError::Step::Lock, EWOULDBLOCK));
  EXPECT_EQ(impatient.refresh(), FileError()) << "reading waits for nobody";
  EXPECT_EQ(impatient.book().entries().size(), 1U);
  ::close(descriptor);
  EXPECT_EQ(append(impatient), 2);
}

TEST_F(HistoryFileTest, IsAsBeforeIfTheDiskIsFull) {
  HistoryFile file(path());
  append(file);
  const QByteArray before = content();
  const std::string next = numbered(entryWith(settingsWith(9, 1)), 2);
  for (std::size_t room = 0; room < next.size(); ++room) {
    SCOPED_TRACE(room);
    {
      const FileSizeLimit full(static_cast<rlim_t>(before.size()) + room);
      ASSERT_EQ(file.append(entryWith(settingsWith(9, 1))).error, failed(FileError::Step::Write, EFBIG));
    }
    ASSERT_EQ(content(), before);
    ASSERT_EQ(file.book().entries().size(), 1U);
  }
  {
    const FileSizeLimit justEnough(static_cast<rlim_t>(before.size()) + next.size());
    EXPECT_EQ(append(file, settingsWith(9, 1)), 2);
  }
  EXPECT_EQ(content().toStdString(), before.toStdString() + next);
}

/// What an ordinary user gets, since nothing is forbidden to the superuser.
int stepForNobody(const std::string &path) {
  return exitStatusOfChild([&path] {
    if (!becomeNobody()) return 100;
    HistoryFile file(path);
    const HistoryFile::Appended appended = file.append(entryWith(someSettings));
    return appended.error.number == EACCES ? static_cast<int>(appended.error.step) : 101;
  });
}

TEST_F(HistoryFileTest, InAFolderThatIsReadOnlyIsNotMade) {
  const auto close = [](const QString &path) {
    ASSERT_EQ(::chmod(QFile::encodeName(path).constData(), 0555), 0);
  };
  ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("data/tavril")));
  close(folder_.filePath(QStringLiteral("data/tavril")));
  close(folder_.filePath(QStringLiteral("data")));
  close(folder_.path());
  EXPECT_EQ(stepForNobody(path()), static_cast<int>(FileError::Step::Open));
  EXPECT_EQ(stepForNobody(QFile::encodeName(folder_.path()).toStdString() + "/data/more/history.jsonl"),
            static_cast<int>(FileError::Step::MakeFolder));
  EXPECT_FALSE(QFile::exists(path_));
  for (const char *name : {"", "data", "data/tavril"}) {
    ::chmod(QFile::encodeName(folder_.filePath(QString::fromLatin1(name))).constData(), 0755);
  }
}

TEST_F(HistoryFileTest, ThatMayOnlyBeReadIsRead) {
  write(numbered(entryWith(someSettings), 1));
  for (const char *name : {"", "data", "data/tavril", "data/tavril/history.jsonl"}) {
    ASSERT_EQ(::chmod(QFile::encodeName(folder_.filePath(QString::fromLatin1(name))).constData(), 0555), 0);
  }
  EXPECT_EQ(stepForNobody(path()), static_cast<int>(FileError::Step::Open));
  EXPECT_EQ(exitStatusOfChild([this] {
              if (!becomeNobody()) return 100;
              HistoryFile file(path());
              return !file.refresh().happened() && file.book().entries().size() == 1 ? 0 : 1;
            }),
            0);
  for (const char *name : {"", "data", "data/tavril"}) {
    ::chmod(QFile::encodeName(folder_.filePath(QString::fromLatin1(name))).constData(), 0755);
  }
}

TEST_F(HistoryFileTest, MayBeAppendedToByTwoProgramsAtOnce) {
  constexpr int each = 60;
  std::vector<pid_t> children;
  for (int child = 0; child < 2; ++child) {
    children.push_back(::fork());
    ASSERT_GE(children.back(), 0);
    if (children.back() != 0) continue;
    HistoryFile file(path());
    for (int i = 0; i < each; ++i) {
      if (file.append(entryWith(settingsWith(9, child * each + i)), std::chrono::minutes(1)).error.happened())
        ::_exit(1);
    }
    ::_exit(0);
  }
  for (const pid_t child : children) {
    int status = -1;
    ASSERT_EQ(::waitpid(child, &status, 0), child);
    EXPECT_EQ(status, 0);
  }
  const HistoryFile file = opened();
  EXPECT_THAT(file.book().remarks(), IsEmpty());
  std::vector<LineNumber> numbers;
  std::vector<int> gains;
  for (const EntryLine &entry : file.book().entries()) {
    numbers.push_back(entry.number);
    gains.push_back(entry.settings.at(8));
  }
  std::vector<LineNumber> expectedNumbers(2 * each);
  std::iota(expectedNumbers.begin(), expectedNumbers.end(), 1);
  EXPECT_EQ(numbers, expectedNumbers);
  std::vector<int> expectedGains(2 * each);
  std::iota(expectedGains.begin(), expectedGains.end(), 0);
  EXPECT_THAT(gains, testing::UnorderedElementsAreArray(expectedGains));
}

TEST(HistoryPath, IsInTheFolderForTheUsersData) {
  const auto pathWith = [](const char *data, const char *home) {
    return exitStatusOfChild([data, home] {
      data == nullptr ? ::unsetenv("XDG_DATA_HOME") : ::setenv("XDG_DATA_HOME", data, 1);
      ::setenv("HOME", home, 1);
      const std::string found = HistoryFile::standardPath();
      if (found == "/data/tavril/history.jsonl") return 1;
      return found == "/home/me/.local/share/tavril/history.jsonl" ? 2 : 3;
    });
  };
  EXPECT_EQ(pathWith("/data", "/home/me"), 1);
  EXPECT_EQ(pathWith(nullptr, "/home/me"), 2);
  EXPECT_EQ(pathWith("", "/home/me"), 2);
  EXPECT_EQ(pathWith("not/absolute", "/home/me"), 2);
}

}  // namespace
}  // namespace tavril::records
