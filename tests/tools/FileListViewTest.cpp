#include "tests/support/AnsweringFilePanels.h"
#include "tests/support/KeyTable.h"
#include "tests/support/MemoryUserFiles.h"
#include "tests/support/RecordingLog.h"
#include "tools/FileListView.h"
#include "tools/FileTable.h"
#include "tools/TableFolder.h"

#include <QStandardPaths>

#include <gtest/gtest.h>

namespace tavril {
namespace {

class RecordingTable final : public FileTable {
 public:
  void setRowHeight(int points) override { rowHeight = points; }
  void reloadData() override { ++reloads; }

  int rowHeight = 0;
  int reloads = 0;
};

class FileListViewTest : public testing::Test {
 protected:
  FileListViewTest() {
    files_.put(QStringLiteral("/out/de.h"), "\"a\"=\"x\";\n");
    files_.put(QStringLiteral("/out/fr.h"), "\"a\"=\"y\";\n");
    files_.put(QStringLiteral("/out/notes.txt"), "");
    list_.viewDidLoad();
  }

  AnsweringFilePanels panels_;
  MemoryUserFiles files_;
  KeyTable strings_;
  RecordingLog log_;
  TableFolder tables_{[] { return QStringLiteral("/out"); }, [](const QString &) {}};
  RecordingTable table_;
  FileListView list_{table_, panels_, files_, tables_, strings_, log_};
};

TEST_F(FileListViewTest, LoadingListsTheTablesOfTheFolder) {
  EXPECT_EQ(list_.hFiles(), QStringList({"de.h", "fr.h"}));
  EXPECT_EQ(log_.lines(), QStringList("(de.h, fr.h)"));
  EXPECT_EQ(table_.rowHeight, 30);
  EXPECT_EQ(list_.a(), QStringList({"1", "2", "3", "4"}));
  EXPECT_EQ(list_.numberOfRowsInTableView(), 2);
}

TEST_F(FileListViewTest, AFileWhoseNameEndsInAnUpperCaseHIsNotListed) {
  files_.put(QStringLiteral("/out/EN.H"), "");
  files_.put(QStringLiteral("/out/en.hh"), "");
  files_.put(QStringLiteral("/out/.h"), "");
  list_.viewDidLoad();
  EXPECT_EQ(list_.hFiles(), QStringList({".h", "de.h", "fr.h"}));
}

TEST_F(FileListViewTest, AColumnIsToldByItsIdentifierAndAnyButNameSaysThree) {
  log_.clear();
  EXPECT_EQ(list_.viewForTableColumn(QStringLiteral("name"), 1), QStringLiteral("fr.h"));
  EXPECT_EQ(list_.viewForTableColumn(QStringLiteral("number"), 0), QStringLiteral("3"));
  EXPECT_EQ(list_.viewForTableColumn(QStringLiteral("Name"), 1), QStringLiteral("3"));
  EXPECT_EQ(log_.lines(), QStringList({"name", "number", "Name"}));
  EXPECT_EQ(list_.viewForTableColumn(QStringLiteral("name"), 2), QString()) << "no such row";
}

TEST_F(FileListViewTest, SelectingReadsTheFileIntoTheLog) {
  log_.clear();
  list_.tableViewSelectionDidChange(1);
  EXPECT_EQ(log_.lines(), QStringList({"Select Row is 1,FileName=fr.h", "/out/fr.h", "\"a\"=\"y\";\n"}));
  EXPECT_EQ(list_.SelectFileName(), QStringLiteral("fr.h"));
}

TEST_F(FileListViewTest, SelectingAFileThatHasVanishedLogsThatItCannotBeRead) {
  files_.contents.remove(QStringLiteral("/out/fr.h"));
  list_.tableViewSelectionDidChange(1);
  EXPECT_EQ(log_.lines().last(), QStringLiteral("Read File Fail"));
  EXPECT_EQ(list_.SelectFileName(), QStringLiteral("fr.h"));
}

TEST_F(FileListViewTest, NoRowOrOneThatIsNotThereChangesNothing) {
  list_.tableViewSelectionDidChange(0);
  log_.clear();
  list_.tableViewSelectionDidChange(-1);
  list_.tableViewSelectionDidChange(2);
  EXPECT_EQ(log_.lines(), QStringList());
  EXPECT_EQ(list_.SelectFileName(), QStringLiteral("de.h"));
}

TEST_F(FileListViewTest, CancelDeletesTheSelectedFileAndListsAgain) {
  list_.tableViewSelectionDidChange(0);
  log_.clear();
  list_.cancel();
  EXPECT_FALSE(files_.contents.contains(QStringLiteral("/out/de.h")));
  EXPECT_EQ(list_.hFiles(), QStringList("fr.h"));
  EXPECT_EQ(table_.reloads, 1);
  EXPECT_EQ(log_.lines(), QStringList({"/out/de.h", "Delete Succeed", "(fr.h)"}));
}

TEST_F(FileListViewTest, CancelWithoutASelectionDeletesNothingAndListsAgain) {
  files_.put(QStringLiteral("/out/it.h"), "");
  list_.cancel();
  EXPECT_EQ(list_.hFiles(), QStringList({"de.h", "fr.h", "it.h"}));
  EXPECT_EQ(table_.reloads, 1);
}

TEST_F(FileListViewTest, ADeletionThatFailsIsLoggedAndTheFileStaysListed) {
  files_.failing.insert(QStringLiteral("remove"));
  list_.tableViewSelectionDidChange(0);
  list_.cancel();
  EXPECT_TRUE(log_.lines().contains(QStringLiteral("Delete de.h is Fail")));
  EXPECT_EQ(list_.hFiles(), QStringList({"de.h", "fr.h"}));
}

TEST_F(FileListViewTest, OpenLogsWhatWasChosenAndNothingElse) {
  panels_.answers = {{FilePanels::OK, QStringLiteral("file:///out/a%20b.txt"), {}}, {}, {7, {}, {}}};
  log_.clear();
  for (int times = 0; times < 3; ++times) list_.open();
  EXPECT_EQ(log_.lines(),
            QStringList({"file opened file:///out/a%20b.txt", "Cancel button was pressed", "Error"}));
  EXPECT_EQ(panels_.opened[0].allowedTypes, QStringList({"txt", "TEXT"}));
}

TEST_F(FileListViewTest, TheFolderIsAskedForEachTime) {
  QString folder = QStringLiteral("/out");
  TableFolder tables{[&] { return folder; }, [&](const QString &other) { folder = other; }};
  FileListView list{table_, panels_, files_, tables, strings_, log_};
  list.viewDidLoad();
  files_.put(QStringLiteral("/other/ja.h"), "");
  tables.setFilepath(QStringLiteral("/other"));
  list.viewDidLoad();
  EXPECT_EQ(list.hFiles(), QStringList("ja.h"));
}

TEST_F(FileListViewTest, ReadingAndDeletingActOnTheFolderThatWasListed) {
  QString folder = QStringLiteral("/out");
  TableFolder tables{[&] { return folder; }, [&](const QString &other) { folder = other; }};
  FileListView list{table_, panels_, files_, tables, strings_, log_};
  list.viewDidLoad();
  files_.put(QStringLiteral("/other/de.h"), "\"a\"=\"z\";\n");
  folder = QStringLiteral("/other");  // without a word to the list
  log_.clear();
  list.tableViewSelectionDidChange(0);
  EXPECT_EQ(log_.lines().last(), QStringLiteral("\"a\"=\"x\";\n"));
  list.cancel();
  EXPECT_FALSE(files_.contents.contains(QStringLiteral("/out/de.h")));
  EXPECT_TRUE(files_.contents.contains(QStringLiteral("/other/de.h"))) << "which it does not show";
  EXPECT_EQ(list.hFiles(), QStringList("fr.h"));
}

TEST_F(FileListViewTest, AFileThatWasSelectedInAnotherFolderIsSelectedNoMore) {
  QString folder = QStringLiteral("/out");
  TableFolder tables{[&] { return folder; }, [&](const QString &other) { folder = other; }};
  FileListView list{table_, panels_, files_, tables, strings_, log_};
  list.viewDidLoad();
  list.tableViewSelectionDidChange(0);
  files_.put(QStringLiteral("/other/de.h"), "");
  tables.setFilepath(QStringLiteral("/other"));
  list.viewDidLoad();
  list.cancel();
  EXPECT_TRUE(files_.contents.contains(QStringLiteral("/other/de.h")));
}

TEST(TableFolder, IsTheDocumentsFolderBeforeAnyConversion) {
  QString remembered;
  TableFolder folder{[&] { return remembered; }, [&](const QString &path) { remembered = path; }};
  EXPECT_EQ(folder.filepath(), QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation));
  EXPECT_FALSE(folder.filepath().isEmpty());
  folder.setFilepath(QStringLiteral("/tables"));
  EXPECT_EQ(folder.filepath(), QStringLiteral("/tables"));
  EXPECT_EQ(remembered, QStringLiteral("/tables"));
}

}  // namespace
}  // namespace tavril
