// A translator's table has what none of those has that came with the program.
#include "editor/AboutWindow.h"
#include "editor/DoctorWindow.h"
#include "platform/StringTableFile.h"
#include "serial/config/Config.h"
#include "tests/gui/GuiBench.h"

#include <QFile>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>
#include <QTemporaryDir>

namespace tavril {
namespace {

const QString mark = QStringLiteral("R&D\u00a0");

/// A folder with a table "qq" whose texts are the English ones, each with an ampersand and a no-break space.
QString folderWithMarkedTable() {
  static const QTemporaryDir folder;
  QFile english(stringsFolder() + QStringLiteral("/en.strings"));
  QFile marked(folder.filePath(QStringLiteral("qq.strings")));
  EXPECT_TRUE(english.open(QIODevice::ReadOnly) && marked.open(QIODevice::WriteOnly));
  const StringTableFile table = StringTableFile::parse(english.readAll());
  for (auto entry = table.entries().cbegin(); entry != table.entries().cend(); ++entry) {
    const bool isText = entry.key() != QStringLiteral("fontsize");
    QString text = (isText ? mark : QString()) + *entry;
    text.replace(u'\\', QStringLiteral("\\\\"));
    text.replace(u'"', QStringLiteral("\\\"")).replace(u'\n', QStringLiteral("\\n"));
    marked.write(QStringLiteral("\"%1\"=\"%2\";\n").arg(entry.key(), text).toUtf8());
  }
  return folder.path();
}

class TranslatorsTable : public GuiBench {
 protected:
  TranslatorsTable() : GuiBench(QStringLiteral("qq"), {stringsFolder(), folderWithMarkedTable()}) {}

  /// How many of the titles have the mark; each of them shows it and makes no key of it.
  template <typename Titled>
  static int checkTitles(const QList<Titled *> &all) {
    int count = 0;
    for (const Titled *one : all) {
      if (!one->text().contains(QStringLiteral("R&"))) continue;
      EXPECT_TRUE(one->text().startsWith(QStringLiteral("R&&D\u00a0"))) << qPrintable(one->text());
      EXPECT_TRUE(QKeySequence::mnemonic(one->text()).isEmpty()) << qPrintable(one->text());
      ++count;
    }
    return count;
  }
  QPlainTextEdit &notice() { return *find<QPlainTextEdit>("MsgView"); }
};

TEST_F(TranslatorsTable, AnAmpersandInItIsShownOnEveryButtonAndMenu) {
  EXPECT_GE(checkTitles(window->findChildren<QAction *>()), 14);
  EXPECT_GE(checkTitles(window->findChildren<QAbstractButton *>()), 10);
  shortcut(Qt::Key_P, Qt::ControlModifier);
  ASSERT_NE(dialog, nullptr);
  EXPECT_EQ(checkTitles(dialog->findChildren<QAbstractButton *>()), 2);
  dialog->reject();
  choose(strings.text(u"about_tavril").replace(u'&', QStringLiteral("&&")));
  const auto *about = window->findChild<AboutWindow *>();
  ASSERT_NE(about, nullptr);
  EXPECT_GE(checkTitles(about->findChildren<QAbstractButton *>()), 2);
  shortcut(Qt::Key_D, Qt::ControlModifier | Qt::ShiftModifier);
  const auto *doctor = window->findChild<DoctorWindow *>();
  ASSERT_NE(doctor, nullptr);
  EXPECT_GE(checkTitles(doctor->findChildren<QAbstractButton *>()), 2);
  int captions = 0;
  for (const QLabel *label : window->findChildren<QLabel *>()) {
    // Two captions are no texts of a table.
    if (!label->buddy() || label->objectName() == u"txCaption" || label->objectName() == u"rxCaption")
      continue;
    EXPECT_TRUE(label->text().startsWith(QStringLiteral("R&&D\u00a0"))) << qPrintable(label->text());
    ++captions;
  }
  EXPECT_GE(captions, 20);
}

TEST_F(TranslatorsTable, ANoticeOfItIsKnownWhenTheLanguageChanges) {
  controller().mouseMoved({500, 400});
  ASSERT_TRUE(notice().toPlainText().startsWith(QStringLiteral("R&D")));
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("en")));
  EXPECT_EQ(notice().toPlainText(), strings.text(u"NoticeMsg_kp"));
}

TEST_F(TranslatorsTable, ANoticeOfItKeepsItsSelectionWhileThePointerMoves) {
  controller().mouseMoved({500, 400});
  QTextCursor cursor = notice().textCursor();
  cursor.setPosition(2);
  cursor.setPosition(9, QTextCursor::KeepAnchor);
  notice().setTextCursor(cursor);
  controller().mouseMoved({501, 401});
  EXPECT_EQ(notice().textCursor().anchor(), 2);
  EXPECT_EQ(notice().textCursor().position(), 9);
}

}  // namespace
}  // namespace tavril
