#include "tests/support/MemoryUserFiles.h"
#include "tests/support/RecordingLog.h"
#include "tools/FileSystem.h"
#include "tools/FileSystemFunction.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

class Results final : public FileSystemFunction {
 public:
  void FileResult(const QString &result) override { all.append(result); }

  QStringList all;
};

class FileSystemTest : public testing::Test {
 protected:
  FileSystemTest() {
    fileSystem_.delegate = &results_;
    files_.folders.insert(folder_);
  }

  const QString folder_ = QStringLiteral("/home/me");
  const QString name_ = QStringLiteral("de.h");
  const QString path_ = QStringLiteral("/home/me/de.h");
  MemoryUserFiles files_;
  RecordingLog log_;
  Results results_;
  FileSystem fileSystem_{files_, log_};
};

TEST_F(FileSystemTest, CreatFolderMakesAFolderAndLogsItsPath) {
  fileSystem_.CreatFolder(folder_, QStringLiteral("new"));
  EXPECT_TRUE(files_.folders.contains(QStringLiteral("/home/me/new")));
  EXPECT_EQ(results_.all, QStringList("Creat Folder Succeed"));
  EXPECT_EQ(log_.lines(), QStringList("/home/me/new"));
}

TEST_F(FileSystemTest, CreatFolderFailsWithoutTheFolderAboveOrWhereThereIsOne) {
  fileSystem_.CreatFolder(QStringLiteral("/nowhere"), QStringLiteral("new"));
  fileSystem_.CreatFolder(QStringLiteral("/home"), QStringLiteral("me"));
  EXPECT_EQ(results_.all, QStringList({"Creat Folder Fail", "Creat Folder Fail"}));
}

TEST_F(FileSystemTest, CreatFileMakesAnEmptyFileAlsoInPlaceOfAnother) {
  fileSystem_.CreatFile(folder_, name_);
  EXPECT_EQ(files_.contents.value(path_, "none"), QByteArray());
  files_.put(path_, "old");
  fileSystem_.CreatFile(folder_, name_);
  EXPECT_EQ(files_.contents.value(path_), QByteArray());
  EXPECT_EQ(results_.all, QStringList({"Creat Succeed", "Creat Succeed"}));
  EXPECT_EQ(log_.lines(), QStringList({path_, path_}));
}

TEST_F(FileSystemTest, CreatFileReportsSuccessAlsoWhenItFailed) {
  files_.failing.insert(QStringLiteral("createEmpty"));
  fileSystem_.CreatFile(folder_, name_);
  EXPECT_EQ(results_.all, QStringList("Creat Succeed"));
  EXPECT_TRUE(files_.contents.isEmpty());
}

TEST_F(FileSystemTest, ReadFileReportsTheWholeText) {
  files_.put(path_, "\"a\"=\"ü\";\n");
  fileSystem_.ReadFile(folder_, name_);
  EXPECT_EQ(results_.all, QStringList(QString::fromUtf8("\"a\"=\"ü\";\n")));
  EXPECT_EQ(log_.lines(), QStringList(path_));
}

TEST_F(FileSystemTest, ReadFileFailsWithoutAFileAndWhereItIsNotUtf8) {
  fileSystem_.ReadFile(folder_, name_);
  files_.put(path_, "\xff");
  fileSystem_.ReadFile(folder_, name_);
  EXPECT_EQ(results_.all, QStringList({"Read File Fail", "Read File Fail"}));
}

TEST_F(FileSystemTest, DeleteFileRemovesTheFile) {
  files_.put(path_, "x");
  fileSystem_.DeleteFile(folder_, name_);
  EXPECT_TRUE(files_.contents.isEmpty());
  EXPECT_EQ(results_.all, QStringList("Delete Succeed"));
  EXPECT_EQ(log_.lines(), QStringList(path_));
}

TEST_F(FileSystemTest, DeleteFileThatFailsLogsWhyAndNamesTheFile) {
  files_.put(path_, "x");
  files_.failing.insert(QStringLiteral("remove"));
  fileSystem_.DeleteFile(folder_, name_);
  EXPECT_EQ(results_.all, QStringList("Delete de.h is Fail"));
  EXPECT_EQ(log_.lines(),
            QStringList({path_, "Error removing file at path: /home/me/de.h: it did not work"}));
}

TEST_F(FileSystemTest, DeleteFileReportsNothingWhenTheFileMayNotBeDeleted) {
  files_.put(path_, "x");
  files_.locked.insert(path_);
  fileSystem_.DeleteFile(folder_, name_);
  EXPECT_EQ(results_.all, QStringList());
  EXPECT_TRUE(files_.contents.contains(path_));
}

TEST_F(FileSystemTest, DeleteFileWithoutANameLeavesTheFolderAlone) {
  files_.contents.insert(QStringLiteral("/home/me/"), "a folder could pass for a file here");
  fileSystem_.DeleteFile(folder_, {});
  EXPECT_EQ(results_.all, QStringList());
  EXPECT_EQ(files_.contents.size(), 1);
}

TEST_F(FileSystemTest, WorksWithoutADelegate) {
  fileSystem_.delegate = nullptr;
  fileSystem_.CreatFile(folder_, name_);
  EXPECT_TRUE(files_.contents.contains(path_));
}

}  // namespace
}  // namespace tavril
