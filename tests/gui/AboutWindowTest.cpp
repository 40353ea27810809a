#include "editor/AboutWindow.h"
#include "editor/LicenceWindow.h"
#include "tests/gui/GuiBench.h"

#include <QAccessible>
#include <QClipboard>
#include <QLabel>
#include <QPlainTextEdit>
#include <QScrollBar>

namespace tavril {
namespace {

class AboutWindowTest : public GuiBench {
 protected:
  AboutWindowTest() {
    choose(strings.text(u"about_tavril"));
    about_ = window->findChild<AboutWindow *>();
    EXPECT_NE(about_, nullptr);
    EXPECT_TRUE(QTest::qWaitForWindowActive(about_));
  }

  template <typename Widget>
  Widget *part(const char *name) {
    auto *found = about_->findChild<Widget *>(QString::fromLatin1(name));
    EXPECT_NE(found, nullptr) << name;
    return found;
  }
  QColor backgroundShown() { return about_->grab().toImage().pixelColor(2, 2); }

  QPointer<AboutWindow> about_;
};

TEST_F(AboutWindowTest, ShowsTitleVersionAndContent) {
  EXPECT_EQ(about_->windowTitle(), strings.text(u"about"));
  EXPECT_EQ(part<QLabel>("abouttitle")->text(), strings.text(u"about"));
  EXPECT_EQ(part<QLabel>("versionlab")->text(), QStringLiteral("Version 1.2.3"));
  EXPECT_EQ(part<QPlainTextEdit>("aboutContent")->toPlainText(), strings.text(u"about_content"));
}

TEST_F(AboutWindowTest, TheBackgroundIsBlackAgainAfterEveryRelayoutWhateverWasSetBefore) {
  EXPECT_EQ(backgroundShown(), QColor(Qt::black));

  QPalette red = about_->palette();
  red.setColor(QPalette::Window, Qt::red);
  about_->setPalette(red);
  EXPECT_EQ(backgroundShown(), QColor(Qt::red));
  about_->resize(about_->size() + QSize(10, 10));
  EXPECT_TRUE(waitFor([this] { return backgroundShown() == Qt::black; }));

  about_->setStyleSheet(QStringLiteral("background: red"));
  EXPECT_TRUE(waitFor([this] { return backgroundShown() == Qt::black; })) << "a new style lays out by itself";

  about_->setAutoFillBackground(false);
  QApplication::postEvent(about_, new QEvent(QEvent::LayoutRequest));
  EXPECT_TRUE(waitFor([this] { return about_->autoFillBackground(); }));
  EXPECT_EQ(backgroundShown(), QColor(Qt::black));
}

TEST_F(AboutWindowTest, IsRaisedAndNotOpenedTwice) {
  choose(strings.text(u"about_tavril"));
  EXPECT_EQ(window->findChildren<AboutWindow *>().size(), 1);
  EXPECT_TRUE(QTest::qWaitForWindowActive(about_));
}

TEST_F(AboutWindowTest, EscapeClosesItFromEveryPartAndItCanBeOpenedAgain) {
  for (const char *name : {"licence", "documents", "abouttitle", "versionlab", "aboutContent"}) {
    QWidget *focused = part<QWidget>(name);
    focused->setFocus();
    QTest::keyClick(focused, Qt::Key_Escape);
    ASSERT_TRUE(waitFor([this] { return about_.isNull(); })) << name;
    choose(strings.text(u"about_tavril"));
    about_ = window->findChild<AboutWindow *>();
    ASSERT_NE(about_, nullptr);
    ASSERT_TRUE(QTest::qWaitForWindowActive(about_));
  }
}

TEST_F(AboutWindowTest, EveryPartCanBeReachedWithTheKeyboardAndHasAnAccessibleName) {
  QStringList reached;
  for (int i = 0; i < 5; ++i) {
    reached.append(about_->focusWidget()->objectName());
    QTest::keyClick(about_->focusWidget(), Qt::Key_Tab);
  }
  reached.sort();
  EXPECT_EQ(reached.join(u' ').toStdString(), "aboutContent abouttitle documents licence versionlab");
  for (const QString &name : std::as_const(reached)) {
    QAccessibleInterface *interface =
        QAccessible::queryAccessibleInterface(about_->findChild<QWidget *>(name));
    ASSERT_NE(interface, nullptr);
    EXPECT_FALSE(interface->text(QAccessible::Name).isEmpty()) << qPrintable(name);
  }
}

TEST_F(AboutWindowTest, ItsTextsCanBeSelectedAndCopiedButNotChanged) {
  auto *content = part<QPlainTextEdit>("aboutContent");
  content->setFocus();
  QTest::keyClick(content, Qt::Key_A, Qt::ControlModifier);
  EXPECT_EQ(content->textCursor().selectedText().size(), strings.text(u"about_content").size());
  QTest::keyClick(content, Qt::Key_C, Qt::ControlModifier);
  EXPECT_EQ(QGuiApplication::clipboard()->text(), strings.text(u"about_content"));
  QTest::keyClicks(content, QStringLiteral("x"));
  EXPECT_EQ(content->toPlainText(), strings.text(u"about_content"));
  for (const char *name : {"abouttitle", "versionlab"}) {
    EXPECT_TRUE(part<QLabel>(name)->textInteractionFlags().testFlag(Qt::TextSelectableByMouse)) << name;
  }
}

TEST_F(AboutWindowTest, ShowsAllOfItsTextsWithoutScrollingInEveryLanguage) {
  for (const QString &language : strings.languages()) {
    languageChoice.choose(language);
    QCoreApplication::sendPostedEvents(nullptr, QEvent::LayoutRequest);
    auto *content = part<QPlainTextEdit>("aboutContent");
    const double height = content->document()->size().height() * content->fontMetrics().lineSpacing();
    EXPECT_LE(height, content->viewport()->height()) << qPrintable(language);
    EXPECT_TRUE(waitFor([&] { return !content->verticalScrollBar()->isVisible(); })) << qPrintable(language);
    for (const char *name : {"licence", "documents"}) {
      auto *button = part<QAbstractButton>(name);
      EXPECT_LE(button->fontMetrics().horizontalAdvance(button->text()), button->width() - 8);
    }
  }
}

TEST_F(AboutWindowTest, TheLicenceIsShownWholeAndEscapeClosesOnlyIt) {
  press(part<QWidget>("licence"));
  auto *licence = about_->findChild<LicenceWindow *>();
  ASSERT_NE(licence, nullptr);
  auto *text = licence->findChild<QPlainTextEdit *>();
  EXPECT_EQ(licence->windowTitle(), strings.text(u"licence"));
  EXPECT_TRUE(text->toPlainText().contains(QStringLiteral("GNU GENERAL PUBLIC LICENSE")));
  EXPECT_TRUE(text->toPlainText().contains(QStringLiteral("END OF TERMS AND CONDITIONS")));
  press(part<QWidget>("licence"));
  EXPECT_EQ(about_->findChildren<LicenceWindow *>().size(), 1);
  const QPointer<LicenceWindow> watched = licence;
  QTest::keyClick(text, Qt::Key_Escape);
  EXPECT_TRUE(waitFor([&] { return watched.isNull(); }));
  EXPECT_TRUE(about_->isVisible());
}

TEST_F(AboutWindowTest, TheDocumentsAreOpenedByTheirButton) {
  EXPECT_EQ(openedOutside.size(), 0);
  auto *button = part<QWidget>("documents");
  press(button);
  QTest::keyClick(button, Qt::Key_Return);
  EXPECT_EQ(openedOutside.size(), 2);
  EXPECT_EQ(openedOutside[0], QUrl::fromLocalFile(guideFolders[0]));
}

}  // namespace
}  // namespace tavril
