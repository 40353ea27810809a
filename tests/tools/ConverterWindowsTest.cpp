#include "platform/Languages.h"
#include "platform/NotificationCenter.h"
#include "tests/support/AnsweringFilePanels.h"
#include "tests/support/KeyTable.h"
#include "tests/support/MemoryUserFiles.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/WaitFor.h"
#include "tools/ConverterWindow.h"
#include "tools/FileListWindow.h"
#include "tools/StringsConverter.h"

#include <QAccessible>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTest>
#include <QTextDocumentFragment>

#include <gtest/gtest.h>

namespace tavril {
namespace {

class ConverterWindowsTest : public testing::Test {
 protected:
  ConverterWindowsTest() {
    parent_.show();
    files_.put(QStringLiteral("/in/keys.txt"), "a\nb");
    files_.put(QStringLiteral("/in/values.txt"), "x\ny");
    files_.folders.insert(QStringLiteral("/out"));
  }

  ConverterWindow &converter() {
    if (!parent_.findChild<ConverterWindow *>()) tool_.showConverter(parent_);
    return *parent_.findChild<ConverterWindow *>();
  }
  FileListWindow &list() {
    if (!parent_.findChild<FileListWindow *>()) tool_.showTables(parent_);
    return *parent_.findChild<FileListWindow *>();
  }
  QTableWidget &table() { return *list().findChild<QTableWidget *>(); }

  template <typename Widget = QPushButton>
  static Widget &find(const QWidget &window, const char *name) {
    auto *found = window.findChild<Widget *>(QString::fromLatin1(name));
    if (!found) throw std::runtime_error(name);
    return *found;
  }
  static void click(const QWidget &window, const char *name) {
    QTest::mouseClick(&find(window, name), Qt::LeftButton);
  }
  void clickRow(int row) {
    QTest::mouseClick(table().viewport(), Qt::LeftButton, {},
                      table().visualItemRect(table().item(row, 0)).center());
  }
  void answer(const char *url, const char *name = "") {
    panels_.answers.push_back({FilePanels::OK, QString::fromLatin1(url), QString::fromLatin1(name)});
  }
  void chooseBoth() {
    answer("file:///in/keys.txt");
    click(converter(), "key");
    answer("file:///in/values.txt");
    click(converter(), "value");
  }
  void putTables() {
    lastFolder_ = QStringLiteral("/out");
    files_.put(QStringLiteral("/out/de.h"), "\"a\"=\"x\";\n");
    files_.put(QStringLiteral("/out/fr.h"), "\"a\"=\"y\";\n");
  }

  /// Every control of the window that Tab reaches, in its order.
  static QStringList tabOrder(QWidget &window) {
    window.activateWindow();
    EXPECT_TRUE(QTest::qWaitForWindowActive(&window));
    QStringList names;
    while (window.focusWidget() && !names.contains(window.focusWidget()->objectName())) {
      names.append(window.focusWidget()->objectName());
      QTest::keyClick(window.focusWidget(), Qt::Key_Tab);
    }
    return names;
  }

  AnsweringFilePanels panels_;
  MemoryUserFiles files_;
  KeyTable strings_;
  RecordingLog log_;
  QString lastFolder_;
  NotificationCenter notifications_;
  StringsConverter tool_{
      panels_,
      files_,
      TableFolder{[this] { return lastFolder_; }, [this](const QString &folder) { lastFolder_ = folder; }},
      strings_,
      notifications_,
      log_};
  QWidget parent_;
};

TEST_F(ConverterWindowsTest, BothFilesAreChosenAndTheTableIsSavedWithThePointer) {
  EXPECT_FALSE(find(converter(), "converter").isEnabled());
  chooseBoth();
  EXPECT_EQ(find<QLineEdit>(converter(), "keypath").text(), QStringLiteral("/in/keys.txt"));
  EXPECT_EQ(find<QLineEdit>(converter(), "valuepath").text(), QStringLiteral("/in/values.txt"));
  ASSERT_TRUE(find(converter(), "converter").isEnabled());
  answer("file:///out/de.h", "de");
  click(converter(), "converter");
  EXPECT_EQ(files_.contents.value(QStringLiteral("/out/de.h")), QByteArray("\"a\"=\"x\";\n\"b\"=\"y\";\n"));
  EXPECT_EQ(lastFolder_, QStringLiteral("/out"));
}

TEST_F(ConverterWindowsTest, BothFilesAreChosenAndTheTableIsSavedWithTheKeyboard) {
  EXPECT_EQ(tabOrder(converter()), QStringList({"key", "keypath", "value", "valuepath", "close"}));
  answer("file:///in/keys.txt");
  QTest::keyClick(&find(converter(), "key"), Qt::Key_Space);
  answer("file:///in/values.txt");
  QTest::keyClick(&find(converter(), "value"), Qt::Key_Space);
  answer("file:///out/de.h", "de");
  QTest::keyClick(&converter(), Qt::Key_Return);
  EXPECT_EQ(files_.contents.value(QStringLiteral("/out/de.h")), QByteArray("\"a\"=\"x\";\n\"b\"=\"y\";\n"));
}

TEST_F(ConverterWindowsTest, SavingNeedsBothFilesAndACancelledPanelChangesNothing) {
  answer("file:///in/keys.txt");
  click(converter(), "key");
  EXPECT_FALSE(find(converter(), "converter").isEnabled());
  click(converter(), "value");
  EXPECT_FALSE(find(converter(), "converter").isEnabled());
  click(converter(), "key");
  EXPECT_EQ(find<QLineEdit>(converter(), "keypath").text(), QStringLiteral("/in/keys.txt"));
}

TEST_F(ConverterWindowsTest, APathIsNoMarkup) {
  answer("file:///in/<b>x</b>.txt");
  click(converter(), "key");
  EXPECT_EQ(find<QLineEdit>(converter(), "keypath").text(), QStringLiteral("/in/<b>x</b>.txt"));
  const QString toolTip = find<QLineEdit>(converter(), "keypath").toolTip();
  EXPECT_EQ(QTextDocumentFragment::fromHtml(toolTip).toPlainText(), QStringLiteral("/in/<b>x</b>.txt"));
}

TEST_F(ConverterWindowsTest, TheListShowsTheTablesOfTheFolderOfTheLastConversion) {
  putTables();
  EXPECT_EQ(find<QLineEdit>(list(), "folder").text(), QStringLiteral("/out"));
  ASSERT_EQ(table().rowCount(), 2);
  EXPECT_EQ(table().item(0, 0)->text(), QStringLiteral("de.h"));
  EXPECT_EQ(table().item(1, 0)->text(), QStringLiteral("fr.h"));
  EXPECT_EQ(table().item(0, 1)->text(), QStringLiteral("3"));
  EXPECT_EQ(table().item(1, 1)->text(), QStringLiteral("3"));
  EXPECT_EQ(table().rowHeight(0), 30);
  EXPECT_TRUE(table().isVisible());
  EXPECT_FALSE(find<QLabel>(list(), "empty").isVisible());
}

TEST_F(ConverterWindowsTest, TheListSaysSoWhenItIsEmpty) {
  lastFolder_ = QStringLiteral("/out");
  EXPECT_FALSE(find<QTableWidget>(list(), "FileTableView").isVisible());
  const auto &empty = find<QLabel>(list(), "empty");
  EXPECT_TRUE(empty.isVisible());
  EXPECT_EQ(empty.text(), QStringLiteral("[no_string_tables]"));
}

TEST_F(ConverterWindowsTest, SelectingARowReadsItsFileOnce) {
  putTables();
  list();
  log_.clear();
  clickRow(1);
  EXPECT_EQ(log_.lines(), QStringList({"Select Row is 1,FileName=fr.h", "/out/fr.h", "\"a\"=\"y\";\n"}));
  EXPECT_EQ(list().controller().SelectFileName(), QStringLiteral("fr.h"));
}

TEST_F(ConverterWindowsTest, DeletingNeedsASelectionAndLeavesNone) {
  putTables();
  EXPECT_FALSE(find(list(), "cancel").isEnabled());
  clickRow(0);
  EXPECT_TRUE(find(list(), "cancel").isEnabled());
  click(list(), "cancel");
  EXPECT_FALSE(files_.contents.contains(QStringLiteral("/out/de.h")));
  ASSERT_EQ(table().rowCount(), 1);
  EXPECT_EQ(table().item(0, 0)->text(), QStringLiteral("fr.h"));
  EXPECT_TRUE(table().selectedItems().isEmpty());
  EXPECT_FALSE(find(list(), "cancel").isEnabled())
      << "what is not selected cannot be deleted by a second click";
  EXPECT_TRUE(files_.contents.contains(QStringLiteral("/out/fr.h")));
}

TEST_F(ConverterWindowsTest, AFileIsSelectedAndDeletedWithTheKeyboard) {
  putTables();
  EXPECT_EQ(tabOrder(list()), QStringList({"FileTableView", "open", "close", "folder"}));
  table().setFocus();
  QTest::keyClick(&table(), Qt::Key_Down);
  QTest::keyClick(&table(), Qt::Key_Down);
  EXPECT_EQ(list().controller().SelectFileName(), QStringLiteral("fr.h"));
  QTest::keyClick(&table(), Qt::Key_Return);
  EXPECT_EQ(files_.names(QStringLiteral("/out")).size(), 2) << "Return deletes nothing";
  QTest::keyClick(&table(), Qt::Key_Tab);
  QTest::keyClick(list().focusWidget(), Qt::Key_Tab);
  ASSERT_EQ(list().focusWidget(), &find(list(), "cancel"));
  QTest::keyClick(list().focusWidget(), Qt::Key_Space);
  EXPECT_EQ(files_.names(QStringLiteral("/out")), QStringList("de.h"));
  EXPECT_EQ(list().focusWidget(), &table());
}

TEST_F(ConverterWindowsTest, DeletingTheLastFileShowsThatTheListIsEmpty) {
  putTables();
  files_.contents.remove(QStringLiteral("/out/fr.h"));
  list();
  clickRow(0);
  find(list(), "cancel").setFocus();
  QTest::keyClick(&find(list(), "cancel"), Qt::Key_Space);
  EXPECT_TRUE(find<QLabel>(list(), "empty").isVisible());
  EXPECT_EQ(list().focusWidget(), &find(list(), "close"));
}

TEST_F(ConverterWindowsTest, OpenOnlyLogsWhatWasChosen) {
  answer("file:///in/keys.txt");
  click(list(), "open");
  EXPECT_EQ(log_.lines().last(), QStringLiteral("file opened file:///in/keys.txt"));
}

TEST_F(ConverterWindowsTest, EachWindowIsThereOnceAndItsContentStaysWhenItIsOpenedAgain) {
  chooseBoth();
  converter().setFocus();
  tool_.showConverter(parent_);
  EXPECT_EQ(parent_.findChildren<ConverterWindow *>().size(), 1);
  EXPECT_EQ(find<QLineEdit>(converter(), "keypath").text(), QStringLiteral("/in/keys.txt"));
  tool_.showTables(parent_);
  tool_.showTables(parent_);
  EXPECT_EQ(parent_.findChildren<FileListWindow *>().size(), 1);
}

TEST_F(ConverterWindowsTest, OpeningTheListAgainShowsTheTableJustSaved) {
  list();
  chooseBoth();
  answer("file:///out/de.h", "de");
  click(converter(), "converter");
  tool_.showTables(parent_);
  EXPECT_EQ(list().controller().hFiles(), QStringList("de.h"));
  EXPECT_EQ(find<QLineEdit>(list(), "folder").text(), QStringLiteral("/out"));
  EXPECT_EQ(table().rowCount(), 1);
}

TEST_F(ConverterWindowsTest, AnOpenListIsReadAnewWhenAConversionGoesToAnotherFolder) {
  putTables();
  list();
  clickRow(0);
  files_.put(QStringLiteral("/new/de.h"), "\"a\"=\"old\";\n");
  chooseBoth();
  answer("file:///new/ja.h", "ja");
  click(converter(), "converter");
  EXPECT_EQ(find<QLineEdit>(list(), "folder").text(), QStringLiteral("/new"));
  ASSERT_EQ(table().rowCount(), 2);
  EXPECT_EQ(table().item(1, 0)->text(), QStringLiteral("ja.h"));
  EXPECT_FALSE(find(list(), "cancel").isEnabled()) << "nothing of it is selected yet";
  click(list(), "cancel");
  clickRow(0);
  click(list(), "cancel");
  EXPECT_TRUE(files_.contents.contains(QStringLiteral("/out/de.h")));
  EXPECT_FALSE(files_.contents.contains(QStringLiteral("/new/de.h")));
}

TEST_F(ConverterWindowsTest, AnOpenListShowsTheTableThatAConversionPutsIntoItsFolder) {
  putTables();
  list();
  chooseBoth();
  answer("file:///out/ja.h", "ja");
  click(converter(), "converter");
  ASSERT_EQ(table().rowCount(), 3);
  EXPECT_EQ(table().item(2, 0)->text(), QStringLiteral("ja.h"));
}

TEST_F(ConverterWindowsTest, AnAmpersandInATableIsShown) {
  for (const char *key : {"choose_file", "convert", "close", "open_file", "delete_file", "key_file"}) {
    strings_.texts.insert(QString::fromLatin1(key), QStringLiteral("R&D %1").arg(QString::fromLatin1(key)));
  }
  for (QWidget *window : {static_cast<QWidget *>(&converter()), static_cast<QWidget *>(&list())}) {
    const auto buttons = window->findChildren<QPushButton *>();
    EXPECT_GE(buttons.size(), 3);
    for (const QPushButton *button : buttons) {
      EXPECT_TRUE(button->text().startsWith(QStringLiteral("R&&D "))) << qPrintable(button->text());
      EXPECT_TRUE(button->shortcut().isEmpty()) << qPrintable(button->text());
    }
  }
}

TEST_F(ConverterWindowsTest, EscapeAndTheCloseButtonCloseAWindowAndItCanBeOpenedAnew) {
  QTest::keyClick(&converter(), Qt::Key_Escape);
  EXPECT_TRUE(waitFor([this] { return !parent_.findChild<ConverterWindow *>(); }));
  click(converter(), "close");
  EXPECT_TRUE(waitFor([this] { return !parent_.findChild<ConverterWindow *>(); }));
  putTables();
  list();
  clickRow(0);
  QTest::keyClick(&table(), Qt::Key_Escape);
  EXPECT_TRUE(waitFor([this] { return !parent_.findChild<FileListWindow *>(); }));
  click(list(), "close");
  EXPECT_TRUE(waitFor([this] { return !parent_.findChild<FileListWindow *>(); }));
  EXPECT_EQ(files_.names(QStringLiteral("/out")).size(), 2);
}

TEST_F(ConverterWindowsTest, TheTextsAreThoseOfTheTableAndCanBeSetAgain) {
  EXPECT_EQ(converter().windowTitle(), QStringLiteral("[strings_converter]"));
  EXPECT_EQ(find<QLabel>(converter(), "hint").text(), QStringLiteral("[converter_hint]"));
  EXPECT_EQ(find<QLineEdit>(converter(), "keypath").placeholderText(), QStringLiteral("[no_file_chosen]"));
  EXPECT_EQ(find(list(), "cancel").text(), QStringLiteral("[delete_file]"));
  strings_.texts.insert(QStringLiteral("strings_converter"), QString::fromUtf8("Umsetzer…"));
  strings_.texts.insert(QStringLiteral("converter_hint"), QStringLiteral("Zwei Dateien"));
  strings_.texts.insert(QStringLiteral("file_name"), QStringLiteral("Name"));
  notifications_.post({QString::fromUtf16(LanguageDidChangeNotification), nullptr, {}});
  EXPECT_EQ(converter().windowTitle(), QStringLiteral("Umsetzer"));
  EXPECT_EQ(find<QLabel>(converter(), "hint").text(), QStringLiteral("Zwei Dateien"));
  EXPECT_EQ(table().horizontalHeaderItem(0)->text(), QStringLiteral("Name"));
  EXPECT_EQ(table().horizontalHeaderItem(1)->text(), QStringLiteral("[file_number]"));
}

TEST_F(ConverterWindowsTest, EveryControlHasAnAccessibleNameOfItsOwn) {
  putTables();
  for (QWidget *window : {static_cast<QWidget *>(&converter()), static_cast<QWidget *>(&list())}) {
    QStringList names;
    for (QWidget *widget : window->findChildren<QWidget *>()) {
      if (widget->focusPolicy() == Qt::NoFocus || !widget->isVisible()) continue;
      QAccessibleInterface *interface = QAccessible::queryAccessibleInterface(widget);
      ASSERT_NE(interface, nullptr) << qPrintable(widget->objectName());
      const QString name = interface->text(QAccessible::Name);
      EXPECT_FALSE(name.isEmpty()) << qPrintable(widget->objectName());
      const QString shown = QString::number(interface->role()) + name;
      EXPECT_FALSE(names.contains(shown)) << qPrintable(name);
      names.append(shown);
    }
    EXPECT_GE(names.size(), 4);
  }
}

}  // namespace
}  // namespace tavril
