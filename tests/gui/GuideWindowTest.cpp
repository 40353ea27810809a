#include "editor/windows/GuideWindow.h"
#include "tests/gui/GuiBench.h"

#include <QFile>
#include <QScrollBar>
#include <QTemporaryDir>
#include <QTextBlock>
#include <QTextCursor>
#include <QTextDocument>

namespace tavril {
namespace {

class GuideWindowTest : public GuiBench {
 protected:
  GuideWindow *open() {
    shortcut(Qt::Key_F1, Qt::NoModifier);
    auto *guide = window->findChild<GuideWindow *>();
    EXPECT_TRUE(!guide || QTest::qWaitForWindowActive(guide));
    return guide;
  }

  /// A guide of the test's own.
  void write(const char *text, const char *name = "user-guide.md") {
    guideFolders = {folder_.path()};
    ASSERT_TRUE(QDir(folder_.path()).mkpath(QStringLiteral("docs")));
    QFile file(folder_.filePath(QStringLiteral("docs/")) + QString::fromLatin1(name));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
    file.write(text);
  }

  static QString shownDocument(GuideWindow &guide) { return guide.browser().source().fileName(); }

  QTemporaryDir folder_;
};

TEST_F(GuideWindowTest, ShowsTheGuideThatComesWithTheProgramWithItsPictures) {
  GuideWindow *guide = open();
  ASSERT_NE(guide, nullptr);
  EXPECT_EQ(guide->windowTitle(), strings.text(u"user_guide"));
  EXPECT_TRUE(guide->browser().toPlainText().startsWith(QStringLiteral("User guide\n")));
  int pictures = 0;
  for (QTextBlock block = guide->browser().document()->begin(); block.isValid(); block = block.next()) {
    for (auto part = block.begin(); !part.atEnd(); ++part) {
      const QTextImageFormat format = part.fragment().charFormat().toImageFormat();
      if (!format.isValid()) continue;
      ++pictures;
      const QVariant picture =
          guide->browser().document()->resource(QTextDocument::ImageResource, QUrl(format.name()));
      EXPECT_FALSE(picture.value<QImage>().isNull()) << format.name().toStdString();
      EXPECT_LE(picture.value<QImage>().width(), 760 * guide->devicePixelRatioF())
          << format.name().toStdString();
    }
  }
  EXPECT_GE(pictures, 4);
}

TEST_F(GuideWindowTest, EveryLinkOfTheGuideLeadsSomewhere) {
  GuideWindow *guide = open();
  ASSERT_NE(guide, nullptr);
  const QUrl start = guide->browser().source();
  QStringList links;
  for (QTextBlock block = guide->browser().document()->begin(); block.isValid(); block = block.next()) {
    for (auto part = block.begin(); !part.atEnd(); ++part) {
      const QString link = part.fragment().charFormat().anchorHref();
      if (!link.isEmpty()) links.append(link);
    }
  }
  EXPECT_GE(links.size(), 4);
  for (const QString &link : links) {
    guide->browser().open(start);
    guide->browser().open(start.resolved(QUrl(link)));
    EXPECT_GT(guide->browser().toPlainText().size(), 100) << link.toStdString();
  }
  EXPECT_TRUE(openedOutside.isEmpty());
}

TEST_F(GuideWindowTest, FollowsALinkToAHeadingAndComesBack) {
  write(("# Top\n\n[down](#down-there), [away](other.md)\n\n" + std::string(200, '\n') +
         [] {
           std::string lines;
           for (int line = 0; line < 200; ++line) lines += "a line\n\n";
           return lines;
         }() +
         "## Down there!\n\nthe end\n")
            .c_str());
  write("# Other\n", "other.md");
  GuideWindow *guide = open();
  ASSERT_NE(guide, nullptr);
  EXPECT_EQ(guide->browser().verticalScrollBar()->value(), 0);
  guide->browser().open(guide->browser().source().resolved(QUrl(QStringLiteral("#down-there"))));
  EXPECT_GT(guide->browser().verticalScrollBar()->value(), 1000);
  guide->browser().open(guide->browser().source().resolved(QUrl(QStringLiteral("other.md"))));
  EXPECT_EQ(shownDocument(*guide), QStringLiteral("other.md"));
  QTest::keyClick(&guide->browser(), Qt::Key_Left, Qt::AltModifier);
  EXPECT_EQ(shownDocument(*guide), QStringLiteral("user-guide.md"));
}

TEST_F(GuideWindowTest, LeavesWhatIsNoDocumentToTheDesktop) {
  write("# Guide\n");
  GuideWindow *guide = open();
  ASSERT_NE(guide, nullptr);
  const QUrl web(QStringLiteral("https://example.org/page.md"));
  guide->browser().open(web);
  guide->browser().open(guide->browser().source().resolved(QUrl(QStringLiteral("../LICENSE"))));
  ASSERT_EQ(openedOutside.size(), 2);
  EXPECT_EQ(openedOutside[0], web);
  EXPECT_EQ(openedOutside[1].fileName(), QStringLiteral("LICENSE"));
  EXPECT_EQ(shownDocument(*guide), QStringLiteral("user-guide.md"));
}

TEST_F(GuideWindowTest, IsRaisedAndNotOpenedTwiceAndEscapeClosesIt) {
  QPointer<GuideWindow> guide = open();
  ASSERT_NE(guide, nullptr);
  EXPECT_EQ(open(), guide);
  EXPECT_EQ(window->findChildren<GuideWindow *>().size(), 1);
  QTest::keyClick(&guide->browser(), Qt::Key_Escape);
  EXPECT_TRUE(waitFor([&] { return guide.isNull(); }));
}

TEST_F(GuideWindowTest, ThatIsMissingIsToldWithTheFolderItBelongsIn) {
  guideFolders = {QStringLiteral("/nonexistent/documents")};
  EXPECT_EQ(open(), nullptr);
  ASSERT_EQ(alert.contents.size(), 1u);
  EXPECT_TRUE(alert.contents[0].informativeText.contains(QStringLiteral("/nonexistent/documents")));
}

TEST_F(GuideWindowTest, IsReachedInTheHelpMenuWhichIsTheLast) {
  const QAction *last = window->menuBar()->actions().constLast();
  EXPECT_EQ(last->text(), strings.text(u"help"));
  ASSERT_EQ(last->menu()->actions().size(), 1);
  EXPECT_EQ(last->menu()->actions().constFirst()->text(), strings.text(u"user_guide"));
  choose(strings.text(u"user_guide"));
  EXPECT_NE(window->findChild<GuideWindow *>(), nullptr);
}

TEST_F(GuideWindowTest, HasItsTitleInTheNewLanguageAtOnce) {
  GuideWindow *guide = open();
  ASSERT_NE(guide, nullptr);
  ASSERT_TRUE(languageChoice.choose(QStringLiteral("de")));
  EXPECT_EQ(guide->windowTitle(), QStringLiteral("Benutzerhandbuch"));
}

TEST(GuideBrowserAnchors, AreMadeOfHeadingsAsLinksNameThem) {
  EXPECT_EQ(GuideBrowser::anchorOf(QStringLiteral("What you see")), QStringLiteral("what-you-see"));
  EXPECT_EQ(GuideBrowser::anchorOf(QStringLiteral("\"Busy\", or the port vanishes")),
            QStringLiteral("busy-or-the-port-vanishes"));
  EXPECT_EQ(GuideBrowser::anchorOf(QStringLiteral("Größe 2-fach")), QStringLiteral("größe-2-fach"));
}

}  // namespace
}  // namespace tavril
