#include "tests/support/AnsweringFilePanels.h"
#include "tests/support/KeyTable.h"
#include "tests/support/MemoryUserFiles.h"
#include "tests/support/PlainElement.h"
#include "tests/support/RecordingLog.h"
#include "tools/FileSystem.h"
#include "tools/MultiLangConverter.h"
#include "tools/TableFolder.h"
#include "tools/TextFile.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

class MultiLangConverterTest : public testing::Test {
 protected:
  MultiLangConverterTest() {
    converter_.viewDidLoad();
    files_.folders.insert(QStringLiteral("/out"));
  }

  void chooseKeys(const QString &url) {
    panels_.answers.push_back({FilePanels::OK, url, {}});
    converter_.key();
  }
  void chooseValues(const QString &url) {
    panels_.answers.push_back({FilePanels::OK, url, {}});
    converter_.value();
  }
  void choose(const QByteArray &keys, const QByteArray &values) {
    files_.put(QStringLiteral("/in/keys.txt"), keys);
    files_.put(QStringLiteral("/in/values.txt"), values);
    chooseKeys(QStringLiteral("file:///in/keys.txt"));
    chooseValues(QStringLiteral("file:///in/values.txt"));
  }
  /// Saves as the panel does, by the folder and what stands in the name field.
  void saveAs(const QString &name, const QString &folderUrl = QStringLiteral("file:///out")) {
    panels_.answers.push_back({FilePanels::OK, folderUrl + u'/' + name + QStringLiteral(".h"), name});
    converter_.converter();
  }
  QString written(const QString &path = QStringLiteral("/out/de.h")) const {
    return files_.contents.contains(path) ? QString::fromUtf8(files_.contents[path]) : QStringLiteral("none");
  }

  AnsweringFilePanels panels_;
  MemoryUserFiles files_;
  KeyTable strings_;
  RecordingLog log_;
  QString lastFolder_;
  TableFolder tables_{[this] { return lastFolder_; },
                      [this](const QString &folder) { lastFolder_ = folder; }};
  PlainElement keypath_;
  PlainElement valuepath_;
  MultiLangConverter converter_{{keypath_, valuepath_}, panels_, files_, tables_, strings_, log_};
};

TEST_F(MultiLangConverterTest, BeginsWithAnEmptyFilepath) {
  EXPECT_TRUE(converter_.filepath().isEmpty());
  EXPECT_FALSE(converter_.filepath().isNull());
}

TEST_F(MultiLangConverterTest, KeyReadsTheChosenFile) {
  files_.put(QStringLiteral("/in/keys.txt"), "a\nb");
  chooseKeys(QStringLiteral("file:///in/keys.txt"));
  EXPECT_EQ(panels_.opened[0].allowedTypes, QStringList("txt"));
  EXPECT_EQ(panels_.opened[0].title, QStringLiteral("[key_file]"));
  EXPECT_EQ(converter_.filepath(), QStringLiteral("/in/keys.txt"));
  EXPECT_EQ(converter_.filepatharray(), QStringList({"", "in", "keys.txt"}));
  EXPECT_EQ(converter_.keyArray(), QStringList({"a", "b"}));
  EXPECT_EQ(keypath_.text(), QStringLiteral("/in/keys.txt"));
  EXPECT_EQ(valuepath_.text(), QString());
  EXPECT_EQ(log_.lines(), QStringList({"file opened /in/keys.txt\n", "(a, b)"}));
}

TEST_F(MultiLangConverterTest, ValueReadsTheChosenFileAndLogsTheKeys) {
  choose("a\nb", "x\ny");
  EXPECT_EQ(converter_.valueArray(), QStringList({"x", "y"}));
  EXPECT_EQ(converter_.keyArray(), QStringList({"a", "b"}));
  EXPECT_EQ(valuepath_.text(), QStringLiteral("/in/values.txt"));
  EXPECT_EQ(keypath_.text(), QStringLiteral("/in/keys.txt"));
  EXPECT_EQ(log_.lines().mid(2), QStringList({"file opened /in/values.txt\n", "(a, b)"}));
  EXPECT_EQ(panels_.opened[1].title, QStringLiteral("[value_file]"));
}

TEST_F(MultiLangConverterTest, CancellingIsLoggedAndChangesNothing) {
  converter_.key();
  converter_.value();
  converter_.converter();
  EXPECT_EQ(log_.lines(), QStringList({"Cancel button was pressed", "Cancel button was pressed", "Cancel"}));
  EXPECT_EQ(converter_.filepath(), QString());
  EXPECT_EQ(keypath_.text(), QString());
  EXPECT_TRUE(files_.contents.isEmpty());
}

TEST_F(MultiLangConverterTest, AnyOtherResultOfAPanelDoesNothing) {
  for (int times = 0; times < 3; ++times) panels_.answers.push_back({7, QStringLiteral("file:///x"), {}});
  converter_.key();
  converter_.value();
  converter_.converter();
  EXPECT_EQ(log_.lines(), QStringList());
  EXPECT_EQ(keypath_.text(), QString());
}

TEST_F(MultiLangConverterTest, TwoLinesAndAFinalNewlineGiveThreeOutputLines) {
  choose("a\nb\n", "x\ny\n");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("\"a\"=\"x\";\n\"b\"=\"y\";\n\"\"=\"\";\n"));
}

TEST_F(MultiLangConverterTest, AnEmptyFileHasOneEmptyLine) {
  choose("", "");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("\"\"=\"\";\n"));
}

TEST_F(MultiLangConverterTest, CarriageReturnsQuotesAndBackslashesAreKept) {
  choose("a\r\nb", "say \"x\"\r\n1\\n2");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("\"a\r\"=\"say \"x\"\r\";\n\"b\"=\"1\\n2\";\n"));
}

TEST_F(MultiLangConverterTest, AValueFileWithMoreLinesThanTheKeyFileHasItsExtraLinesIgnored) {
  choose("a", "x\ny\nz");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("\"a\"=\"x\";\n"));
}

TEST_F(MultiLangConverterTest, AValueFileWithFewerLinesStopsTheConversionAndLeavesTheEmptyFile) {
  files_.put(QStringLiteral("/out/de.h"), "old");
  choose("a\nb\nc", "x\ny");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QString());
  EXPECT_EQ(log_.warnings().last(), QStringLiteral("Out of range: line 3 has a key but no value"));
  // The program goes on.
  choose("a", "x");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("\"a\"=\"x\";\n"));
}

TEST_F(MultiLangConverterTest, SavingLogsEveryStep) {
  choose("a", "x");
  log_.clear();
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(panels_.saved[0].allowedTypes, QStringList("h"));
  EXPECT_EQ(log_.lines(), QStringList({"OK", "file saved de\n<save panel: file:///out/de.h>", "HOME : /out",
                                       "/out/de.h", "Creat Succeed"}));
}

TEST_F(MultiLangConverterTest, EachConversionHasAFileSystemOfItsOwn) {
  EXPECT_EQ(converter_.fileSystem(), nullptr);
  choose("a", "x");
  saveAs(QStringLiteral("de"));
  ASSERT_NE(converter_.fileSystem(), nullptr);
  EXPECT_EQ(converter_.fileSystem()->delegate, &converter_);
}

TEST_F(MultiLangConverterTest, APathWithSpacesWorks) {
  files_.put(QStringLiteral("/my files/the keys.txt"), "a");
  files_.put(QStringLiteral("/my files/the values.txt"), "x");
  chooseKeys(QStringLiteral("file:///my%20files/the%20keys.txt"));
  chooseValues(QStringLiteral("file:///my%20files/the%20values.txt"));
  EXPECT_EQ(converter_.filepath(), QStringLiteral("/my files/the values.txt"));
  saveAs(QStringLiteral("de"), QStringLiteral("file:///my%20files"));
  EXPECT_EQ(written(QStringLiteral("/my files/de.h")), QStringLiteral("\"a\"=\"x\";\n"));
  EXPECT_EQ(lastFolder_, QStringLiteral("/my files"));
}

TEST_F(MultiLangConverterTest, APathWithOtherPercentEscapesKeepsThemAndFailsToOpen) {
  files_.put(QString::fromUtf8("/in/schlüssel.txt"), "a");
  chooseKeys(QStringLiteral("file:///in/schl%C3%BCssel.txt"));
  EXPECT_EQ(converter_.filepath(), QStringLiteral("/in/schl%C3%BCssel.txt"));
  EXPECT_EQ(keypath_.text(), QStringLiteral("/in/schl%C3%BCssel.txt"));
  EXPECT_EQ(converter_.keyArray(), QStringList());
}

TEST_F(MultiLangConverterTest, ANameWithoutExtensionGetsItAppended) {
  choose("a", "x");
  saveAs(QStringLiteral("table"));
  EXPECT_EQ(files_.names(QStringLiteral("/out")), QStringList("table.h"));
}

TEST_F(MultiLangConverterTest, ANameThatAlreadyEndsInTheExtensionGetsItASecondTime) {
  choose("a", "x");
  saveAs(QStringLiteral("table.h"));
  EXPECT_EQ(files_.names(QStringLiteral("/out")), QStringList("table.h.h"));
  EXPECT_EQ(written(QStringLiteral("/out/table.h.h")), QStringLiteral("\"a\"=\"x\";\n"));
}

TEST_F(MultiLangConverterTest, ANameThatTheUrlEscapesIsNotFoundInItAndNothingIsWritten) {
  choose("a", "x");
  panels_.answers.push_back(
      {FilePanels::OK, QStringLiteral("file:///out/my%20table.h"), QStringLiteral("my table")});
  converter_.converter();
  EXPECT_EQ(files_.contents.size(), 2);
  EXPECT_TRUE(log_.lines().contains(QStringLiteral("HOME : /out/my table.h")));
  EXPECT_EQ(log_.lines().mid(log_.lines().size() - 2),
            QStringList({"Creat Succeed", "/out/my table.h/my table.h: it did not work"}));
  EXPECT_EQ(lastFolder_, QString()) << "nothing was converted";
}

TEST_F(MultiLangConverterTest, TheNameIsTakenOutOfTheUrlWhereverItStands) {
  files_.folders.insert(QStringLiteral("/outside"));
  choose("a", "x");
  panels_.answers.push_back(
      {FilePanels::OK, QStringLiteral("file:///out/de.hside/de.h"), QStringLiteral("de")});
  converter_.converter();
  EXPECT_EQ(written(QStringLiteral("/outside/de.h")), QStringLiteral("\"a\"=\"x\";\n"));
}

TEST_F(MultiLangConverterTest, AFileThatCannotBeReadCountsAsOneOfNoLines) {
  choose("a\nb", "x\ny");
  chooseKeys(QStringLiteral("file:///in/gone.txt"));
  EXPECT_EQ(converter_.keyArray(), QStringList());
  EXPECT_EQ(converter_.valueArray(), QStringList({"x", "y"}));
  EXPECT_EQ(keypath_.text(), QStringLiteral("/in/gone.txt"));
  EXPECT_EQ(log_.lines().mid(4),
            QStringList({"file opened /in/gone.txt\n", "/in/gone.txt: it did not work", "()"}));
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QString());
}

TEST_F(MultiLangConverterTest, AFileThatIsNotUtf8CountsAsOneOfNoLines) {
  choose("a\n\xff\xfe", "x\ny");
  EXPECT_EQ(converter_.keyArray(), QStringList());
  EXPECT_TRUE(log_.lines().contains(QStringLiteral("/in/keys.txt: not valid UTF-8")));
}

TEST_F(MultiLangConverterTest, AFileAboveTheLimitIsRefusedWithALogLine) {
  choose(QByteArray(TextFile::largestSize + 1, '\n'), "x");
  EXPECT_EQ(converter_.keyArray(), QStringList());
  EXPECT_TRUE(log_.lines().contains(QStringLiteral("/in/keys.txt: it did not work")));
}

TEST_F(MultiLangConverterTest, AFileThatVanishesBetweenChoosingAndConvertingWasReadAlready) {
  choose("a", "x");
  files_.contents.clear();
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("\"a\"=\"x\";\n"));
}

TEST_F(MultiLangConverterTest, AFolderWithoutWritePermissionGetsNoFileAndTheProgramGoesOn) {
  files_.failing.insert(QStringLiteral("createEmpty"));
  choose("a", "x");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("none"));
  EXPECT_EQ(log_.lines().mid(log_.lines().size() - 2),
            QStringList({"Creat Succeed", "/out/de.h: it did not work"}));
  files_.failing.clear();
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(written(), QStringLiteral("\"a\"=\"x\";\n"));
}

TEST_F(MultiLangConverterTest, AWriteThatFailsIsLogged) {
  files_.failing.insert(QStringLiteral("write"));
  choose("a", "x");
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(log_.lines().last(), QStringLiteral("/out/de.h: it did not work"));
}

TEST_F(MultiLangConverterTest, TheFolderOfTheLastConversionIsRemembered) {
  choose("a", "x");
  EXPECT_EQ(lastFolder_, QString());
  saveAs(QStringLiteral("de"));
  EXPECT_EQ(lastFolder_, QStringLiteral("/out"));
}

}  // namespace
}  // namespace tavril
