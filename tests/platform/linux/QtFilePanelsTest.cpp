#include "platform/linux/QtFilePanels.h"
#include "platform/linux/QtMainQueue.h"
#include "platform/linux/QtTimers.h"
#include "tests/support/ActiveWindow.h"
#include "tests/support/WaitFor.h"

#include <QApplication>
#include <QDialogButtonBox>
#include <QDir>
#include <QFile>
#include <QFileDialog>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QTemporaryDir>
#include <QTest>
#include <QTimer>

#include <gtest/gtest.h>

namespace tavril {
namespace {

using namespace std::chrono_literals;

QFileDialog *shownPanel() {
  return qobject_cast<QFileDialog *>(QApplication::activeModalWidget());
}

QMessageBox *shownQuestion() {
  return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

class QtFilePanelsTest : public testing::Test {
 protected:
  QtFilePanelsTest() {
    EXPECT_TRUE(folder_.isValid());
    // As on a machine without a desktop, whose dialogs no test can use.
    QApplication::setAttribute(Qt::AA_DontUseNativeDialogs);
  }

  /// Runs the function from the event loop of the panel.
  template <typename Function>
  void whileUp(Function function) {
    QTimer::singleShot(0, Qt::PreciseTimer, [function] {
      ASSERT_NE(shownPanel(), nullptr);
      function();
    });
  }

  /// Puts the name into the name field and presses the button that ends the panel.
  void type(const QString &name) {
    auto *field = shownPanel()->findChild<QLineEdit *>();
    ASSERT_NE(field, nullptr);
    // Not key by key, for the completions that come up are none of ours.
    field->setText(name);
    const auto button = shownPanel()->acceptMode() == QFileDialog::AcceptSave ? QDialogButtonBox::Save
                                                                              : QDialogButtonBox::Open;
    QTest::mouseClick(shownPanel()->findChild<QDialogButtonBox *>()->button(button), Qt::LeftButton);
  }

  /// Chooses the file by its name, which may have a folder before it.
  FilePanels::Choice open(const QString &path) {
    whileUp([this, path] { type(path); });
    return panels_.runOpenPanel({QStringLiteral("Title"), {QStringLiteral("txt"), QStringLiteral("TEXT")}});
  }
  FilePanels::Choice save(const QString &path) {
    whileUp([this, path] { type(path); });
    return panels_.runSavePanel({QStringLiteral("Title"), {QStringLiteral("h")}});
  }
  void put(const QString &name) {
    QFile file(folder_.filePath(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  }
  QString url(const char *encodedName) const {
    return QStringLiteral("file://") + folder_.path() + u'/' + QString::fromLatin1(encodedName);
  }

  QTemporaryDir folder_;
  QtMainQueue queue_;
  QtTimers timers_{queue_};
  QtFilePanels panels_{queue_};
};

TEST_F(QtFilePanelsTest, OpeningGivesTheUrlOfTheFile) {
  put(QStringLiteral("keys.txt"));
  const FilePanels::Choice choice = open(folder_.filePath(QStringLiteral("keys.txt")));
  EXPECT_EQ(choice.result, FilePanels::OK);
  EXPECT_EQ(choice.url, url("keys.txt"));
}

TEST_F(QtFilePanelsTest, TheUrlIsPercentEncoded) {
  const QString name = QString::fromUtf8("mÿ 100%.txt");
  put(name);
  EXPECT_EQ(open(folder_.filePath(name)).url, url("m%C3%BF%20100%25.txt"));
}

TEST_F(QtFilePanelsTest, CancellingGivesNothing) {
  whileUp([] { QTest::keyClick(shownPanel(), Qt::Key_Escape); });
  FilePanels::Choice choice = panels_.runOpenPanel({QStringLiteral("Title"), {QStringLiteral("txt")}});
  EXPECT_EQ(choice.result, FilePanels::Cancel);
  EXPECT_EQ(choice.url, QString());
  whileUp([] { shownPanel()->close(); });
  choice = panels_.runSavePanel({QStringLiteral("Title"), {QStringLiteral("h")}});
  EXPECT_EQ(choice.result, FilePanels::Cancel);
}

TEST_F(QtFilePanelsTest, BeginsInTheDocumentsFolderOrWithoutOneInTheHomeFolder) {
  const QByteArray home = qgetenv("HOME");
  qputenv("HOME", QFile::encodeName(folder_.path()));
  const FilePanels::Content content{QStringLiteral("Title"), {QStringLiteral("h")}};
  for (const QString &folder : {folder_.path(), folder_.filePath(QStringLiteral("Documents"))}) {
    ASSERT_TRUE(QDir().mkpath(folder));
    whileUp([&] {
      EXPECT_EQ(shownPanel()->directory().path(), folder);
      shownPanel()->close();
    });
    QtFilePanels(queue_).runOpenPanel(content);
  }
  qputenv("HOME", home);
}

TEST_F(QtFilePanelsTest, ShowsItsTitleAndOnlyFilesOfItsTypes) {
  whileUp([] {
    EXPECT_EQ(shownPanel()->windowTitle(), QStringLiteral("Title"));
    EXPECT_EQ(shownPanel()->nameFilters(), QStringList("*.txt *.TEXT"));
    EXPECT_EQ(shownPanel()->windowModality(), Qt::ApplicationModal);
    shownPanel()->close();
  });
  panels_.runOpenPanel({QStringLiteral("Title"), {QStringLiteral("txt"), QStringLiteral("TEXT")}});
}

TEST_F(QtFilePanelsTest, AFolderIsNotTakenForAFileButGoneInto) {
  const FilePanels::Content content{QStringLiteral("Title"), {QStringLiteral("h")}};
  for (const bool saving : {false, true}) {
    whileUp([this] {
      type(folder_.path());
      ASSERT_NE(shownPanel(), nullptr);
      EXPECT_EQ(shownPanel()->directory().path(), folder_.path());
      shownPanel()->close();
    });
    const FilePanels::Choice choice = saving ? panels_.runSavePanel(content) : panels_.runOpenPanel(content);
    EXPECT_EQ(choice.result, FilePanels::Cancel);
  }
}

TEST_F(QtFilePanelsTest, ThePanelBeginsWhereTheOneBeforeEnded) {
  put(QStringLiteral("keys.txt"));
  open(folder_.filePath(QStringLiteral("keys.txt")));
  EXPECT_EQ(save(QStringLiteral("de")).url, url("de.h"));
}

TEST_F(QtFilePanelsTest, SavingGivesWhatStoodInTheNameFieldAndAUrlWithTheExtension) {
  const FilePanels::Choice choice = save(folder_.filePath(QStringLiteral("de")));
  EXPECT_EQ(choice.result, FilePanels::OK);
  EXPECT_EQ(choice.name, QStringLiteral("de"));
  EXPECT_EQ(choice.url, url("de.h"));
}

TEST_F(QtFilePanelsTest, ANameThatHasTheExtensionIsGivenAsItIs) {
  const FilePanels::Choice choice = save(folder_.filePath(QStringLiteral("de.h")));
  EXPECT_EQ(choice.name, QStringLiteral("de.h"));
  EXPECT_EQ(choice.url, url("de.h.h"));
}

TEST_F(QtFilePanelsTest, AsksBeforeTheFileThatWouldBeWrittenIsReplaced) {
  put(QStringLiteral("de.h"));
  for (const auto answer : {QMessageBox::Yes, QMessageBox::No}) {
    QString question;
    whileUp([&] {
      QTimer::singleShot(0, qApp, [&] {
        ASSERT_NE(shownQuestion(), nullptr);
        question = shownQuestion()->text();
        EXPECT_EQ(shownQuestion()->defaultButton(), shownQuestion()->button(QMessageBox::No));
        // After No the panel is up again.
        if (answer == QMessageBox::No) QTimer::singleShot(0, qApp, [] { shownPanel()->close(); });
        QTest::mouseClick(shownQuestion()->button(answer), Qt::LeftButton);
      });
      type(folder_.filePath(QStringLiteral("de")));
    });
    const FilePanels::Choice choice = panels_.runSavePanel({QStringLiteral("Title"), {QStringLiteral("h")}});
    EXPECT_TRUE(question.startsWith(QStringLiteral("de.h already exists."))) << qPrintable(question);
    EXPECT_EQ(choice.result, answer == QMessageBox::Yes ? FilePanels::OK : FilePanels::Cancel);
  }
}

TEST_F(QtFilePanelsTest, DoesNotAskAboutAFileThatWillNotBeWritten) {
  put(QStringLiteral("de.h"));
  EXPECT_EQ(save(folder_.filePath(QStringLiteral("de.h"))).url, url("de.h.h"));
}

TEST_F(QtFilePanelsTest, NoJobAndNoTimerRunsWhileAPanelIsUp) {
  int ran = 0;
  queue_.async([&ran] { ++ran; });
  const auto tick = timers_.repeating(1ms, [&ran] { ++ran; });
  int ranDuringThePanel = -1;
  QTimer::singleShot(20ms, Qt::PreciseTimer, [&] {
    ranDuringThePanel = ran;
    shownPanel()->close();
  });
  panels_.runOpenPanel({QStringLiteral("Title"), {QStringLiteral("txt")}});
  EXPECT_EQ(ranDuringThePanel, 0);
  EXPECT_FALSE(queue_.isHeld());
  EXPECT_TRUE(waitFor([&ran] { return ran >= 2; }));
}

TEST_F(QtFilePanelsTest, StandsOverTheActiveWindowAndSurvivesItsEnd) {
  for (const bool saving : {false, true}) {
    auto window = std::make_unique<QWidget>();
    window->show();
    makeActive(window.get());
    whileUp([&] {
      EXPECT_EQ(shownPanel()->parentWidget(), window.get());
      window.reset();
    });
    const FilePanels::Content content{QStringLiteral("Title"), {QStringLiteral("h")}};
    const FilePanels::Choice choice = saving ? panels_.runSavePanel(content) : panels_.runOpenPanel(content);
    EXPECT_EQ(choice.result, FilePanels::Cancel);
    EXPECT_FALSE(queue_.isHeld());
  }
}

}  // namespace
}  // namespace tavril
