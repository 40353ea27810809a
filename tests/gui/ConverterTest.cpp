// The strings converter as it is shipped: with the editor's look, real files and the texts of every language.
#include "look/Style.h"
#include "platform/Languages.h"
#include "platform/NotificationCenter.h"
#include "platform/StringTableFile.h"
#include "platform/linux/PosixUserFiles.h"
#include "platform/linux/StringTables.h"
#include "tests/support/AnsweringFilePanels.h"
#include "tests/support/RecordingLog.h"
#include "tests/support/TestFiles.h"
#include "tools/ConverterWindow.h"
#include "tools/FileListWindow.h"
#include "tools/StringsConverter.h"

#include <QApplication>
#include <QDir>
#include <QFile>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <QTableWidget>
#include <QTemporaryDir>
#include <QTest>
#include <QUrl>

#include <gtest/gtest.h>

#include <map>

namespace tavril {
namespace {

const QString shipped = QStringLiteral(TAVRIL_STRINGS);

class ConverterOnDisk : public testing::Test {
 protected:
  ConverterOnDisk() {
    Style::apply(*qApp);
    EXPECT_TRUE(folder_.isValid());
    window_.show();
  }

  QString path(const QString &name) const { return folder_.filePath(name); }
  static QString url(const QString &path) { return QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded); }

  ConverterWindow &converter() {
    tool_.showConverter(window_);
    return *window_.findChild<ConverterWindow *>();
  }
  FileListWindow &list() {
    tool_.showTables(window_);
    return *window_.findChild<FileListWindow *>();
  }

  void choose(const char *button, const QString &file) {
    panels_.answers.push_back({FilePanels::OK, url(file), {}});
    QTest::mouseClick(converter().findChild<QPushButton *>(QString::fromLatin1(button)), Qt::LeftButton);
  }
  void save(const QString &folder, const QString &name) {
    panels_.answers.push_back({FilePanels::OK, url(folder + u'/' + name + QStringLiteral(".h")), name});
    QTest::mouseClick(converter().findChild<QPushButton *>(QStringLiteral("converter")), Qt::LeftButton);
  }
  /// Through the window, from two files to a third.
  void convert(const QByteArray &keys, const QByteArray &values, const QString &name) {
    writeFile(path(QStringLiteral("keys.txt")), keys);
    writeFile(path(QStringLiteral("values.txt")), values);
    choose("key", path(QStringLiteral("keys.txt")));
    choose("value", path(QStringLiteral("values.txt")));
    save(folder_.path(), name);
  }

  QTemporaryDir folder_;
  RecordingLog log_;
  StringTables strings_{{shipped}, log_};
  AnsweringFilePanels panels_;
  PosixUserFiles files_;
  QString lastFolder_;
  NotificationCenter notifications_;
  StringsConverter tool_{
      panels_,
      files_,
      TableFolder{[this] { return lastFolder_; }, [this](const QString &folder) { lastFolder_ = folder; }},
      strings_,
      notifications_,
      log_};
  QWidget window_;
};

/// The keys and the values of a shipped table as a translator would write them down: one text on each line,
/// as it stands in the table, its escapes untouched.
std::pair<QByteArrayList, QByteArrayList> linesOf(const QString &language) {
  std::pair<QByteArrayList, QByteArrayList> lines;
  QFile file(QStringLiteral("%1/%2.strings").arg(shipped, language));
  EXPECT_TRUE(file.open(QIODevice::ReadOnly));
  for (const QByteArray &line : file.readAll().split('\n')) {
    const auto middle = line.indexOf("\"=\"");
    if (!line.startsWith('"') || middle < 0 || !line.endsWith("\";")) continue;
    lines.first.append(line.mid(1, middle - 1));
    lines.second.append(line.mid(middle + 3).chopped(2));
  }
  return lines;
}

TEST_F(ConverterOnDisk, ATableThatWasMadeWithItIsSpokenByTheEditor) {
  for (const QString &language : strings_.languages()) {
    const auto [keys, values] = linesOf(language);
    convert(keys.join('\n') + '\n', values.join('\n') + '\n', QStringLiteral("qqq-") + language);
    RecordingLog problems;
    StringTables own({shipped, folder_.path()}, problems);
    EXPECT_EQ(problems.lines(), QStringList());
    ASSERT_TRUE(own.setLanguage(QStringLiteral("qqq-") + language));
    ASSERT_TRUE(strings_.setLanguage(language));
    EXPECT_GT(keys.size(), 100);
    for (const QByteArray &key : keys) {
      const QString text = QString::fromUtf8(key);
      EXPECT_EQ(own.text(text), strings_.text(text)) << key.constData();
    }
    EXPECT_TRUE(own.text(u"ToolTip_ack_policy").contains(u'\n')) << "an escaped line end still is one";
  }
}

TEST_F(ConverterOnDisk, AUsersTableWinsOverTheShippedOneKeyByKey) {
  convert("language_name\nread", "Plattd\xc3\xbctsch\n\\\"Lesen\\\" \\\\", QStringLiteral("en"));
  StringTables own({shipped, folder_.path()}, log_);
  EXPECT_EQ(own.text(u"language_name"), QString::fromUtf8("Plattdütsch"));
  EXPECT_EQ(own.text(u"read"), QStringLiteral("\"Lesen\" \\"));
  EXPECT_EQ(own.text(u"relax"), strings_.text(u"relax"));
}

TEST_F(ConverterOnDisk, AQuoteThatTheTranslatorDidNotEscapeSpoilsItsLineAloneAndIsReported) {
  convert("read\nrelax", "\"Lesen\"\nLos", QStringLiteral("de"));
  EXPECT_EQ(contentOf(path(QStringLiteral("de.h"))),
            QByteArray("\"read\"=\"\"Lesen\"\";\n\"relax\"=\"Los\";\n"));
  RecordingLog problems;
  StringTables own({folder_.path()}, problems);
  ASSERT_TRUE(own.setLanguage(QStringLiteral("de")));
  EXPECT_EQ(own.text(u"relax"), QStringLiteral("Los"));
  EXPECT_EQ(problems.lines().size(), 1);
}

TEST_F(ConverterOnDisk, FilesWithCarriageReturnsMakeATableThatTheEditorUnderstands) {
  convert("read\r\nrelax\r\n", "Lesen\r\nLos\r\n", QStringLiteral("de"));
  EXPECT_TRUE(contentOf(path(QStringLiteral("de.h"))).startsWith("\"read\r\"=\"Lesen\r\";\n"));
  StringTables own({folder_.path()}, log_);
  ASSERT_TRUE(own.setLanguage(QStringLiteral("de")));
  EXPECT_EQ(own.text(u"read"), QStringLiteral("Lesen"));
}

TEST_F(ConverterOnDisk, ATableThatIsALinkToTheKeyFileLeavesTheKeyFileAlone) {
  ASSERT_TRUE(QFile::link(path(QStringLiteral("keys.txt")), path(QStringLiteral("de.h"))));
  convert("a", "x", QStringLiteral("de"));
  EXPECT_EQ(contentOf(path(QStringLiteral("keys.txt"))), QByteArray("a"));
  EXPECT_EQ(contentOf(path(QStringLiteral("de.h"))), QByteArray("\"a\"=\"x\";\n"));
}

TEST_F(ConverterOnDisk, AFolderInPlaceOfAFileIsLoggedAndChangesNothing) {
  ASSERT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("de.h")));
  convert("a", "x", QStringLiteral("de"));
  choose("key", folder_.path());
  EXPECT_TRUE(QFileInfo(path(QStringLiteral("de.h"))).isDir());
  EXPECT_EQ(converter().controller().keyArray(), QStringList());
  EXPECT_EQ(log_.lines().filter(QStringLiteral(": Is a directory")).size(), 2);
}

TEST_F(ConverterOnDisk, AFileOfAGigabyteNeitherHangsNorCrashes) {
  writeFile(path(QStringLiteral("values.txt")), "x");
  QFile huge(path(QStringLiteral("huge.txt")));
  ASSERT_TRUE(huge.open(QIODevice::WriteOnly));
  ASSERT_TRUE(huge.resize(qint64(1) << 30));
  choose("key", huge.fileName());
  EXPECT_EQ(converter().controller().keyArray(), QStringList());
  EXPECT_EQ(log_.lines().filter(QStringLiteral("huge.txt: File too large")).size(), 1);
}

/// The windows in each language that came with the program.
class ConverterLooks : public ConverterOnDisk, public testing::WithParamInterface<const char *> {
 protected:
  void take(const QString &name, QWidget &window) {
    const QImage picture = window.grab().toImage();
    ASSERT_FALSE(picture.isNull());
    for (const auto &[other, taken] : pictures_) EXPECT_NE(picture, taken) << qPrintable(name + u' ' + other);
    pictures_[name] = picture;
    const QString folder = qEnvironmentVariable("TAVRIL_SCREENSHOTS");
    if (folder.isEmpty()) return;
    EXPECT_TRUE(
        picture.save(QStringLiteral("%1/%2-%3.png").arg(folder, name, QString::fromLatin1(GetParam()))));
  }

  /// Whether all texts of the window are within their labels and buttons, and these within the window.
  static void expectAllTextsFit(QWidget &window) {
    int count = 0;
    for (const QLabel *label : window.findChildren<QLabel *>()) {
      if (!label->isVisible()) continue;
      EXPECT_GE(label->width(), label->minimumSizeHint().width()) << qPrintable(label->text());
      EXPECT_GE(label->height(), label->heightForWidth(label->width())) << qPrintable(label->text());
      ++count;
    }
    for (const QPushButton *button : window.findChildren<QPushButton *>()) {
      const QSize taken = button->fontMetrics().size(Qt::TextSingleLine, button->text());
      EXPECT_LE(taken.width(), button->width() - 8) << qPrintable(button->text());
      EXPECT_TRUE(window.rect().contains(QRect(button->mapTo(&window, QPoint()), button->size())));
      ++count;
    }
    EXPECT_GE(count, 3);
  }

 private:
  std::map<QString, QImage> pictures_;
};

TEST_P(ConverterLooks, NoTextIsCutAndEveryStateHasItsPicture) {
  ASSERT_TRUE(strings_.setLanguage(QString::fromLatin1(GetParam())));
  lastFolder_ = folder_.path();
  take(QStringLiteral("converter-empty"), converter());
  expectAllTextsFit(converter());
  take(QStringLiteral("tables-empty"), list());
  expectAllTextsFit(list());
  for (const char *name : {"de", "fr", "pt-BR"}) convert("read", "x", QString::fromLatin1(name));
  take(QStringLiteral("converter"), converter());
  list().findChild<QTableWidget *>()->selectRow(1);
  auto &shown = *window_.findChild<FileListWindow *>();
  take(QStringLiteral("tables"), shown);
  expectAllTextsFit(shown);
  EXPECT_EQ(shown.findChild<QTableWidget *>()->font().pixelSize(), Style::textFont().pixelSize());
}

INSTANTIATE_TEST_SUITE_P(Languages, ConverterLooks, testing::ValuesIn([] {
                           static std::vector<QByteArray> names;
                           for (const QString &file : QDir(shipped).entryList({QStringLiteral("*.strings")}))
                             names.push_back(file.section(u'.', 0, 0).toLatin1());
                           std::vector<const char *> languages;
                           for (const QByteArray &name : names) languages.push_back(name.constData());
                           return languages;
                         }()),
                         [](const auto &parameter) {
                           return QString::fromLatin1(parameter.param).remove(u'-').toStdString();
                         });

}  // namespace
}  // namespace tavril
