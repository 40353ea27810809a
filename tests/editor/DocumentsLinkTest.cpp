#include "editor/windows/DocumentsLink.h"
#include "tests/support/TestDesktop.h"

#include <QFile>
#include <QTemporaryDir>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace tavril {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;

class DocumentsLinkTest : public testing::Test {
 protected:
  DocumentsLinkTest() { fakes_.strings.texts.insert("documents_not_opened", "Look in %@!"); }

  static void putReadmeInto(const QTemporaryDir &folder) {
    QFile file(folder.filePath(QStringLiteral("README.md")));
    ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  }
  void openOneOf(const QStringList &folders, bool canBeShown = true) {
    DocumentsLink(
        folders,
        [this, canBeShown](const QString &folder) {
          shown_.append(folder);
          return canBeShown;
        },
        fakes_.desktop)
        .open();
  }
  void expectAlertAbout(const QString &folder) {
    ASSERT_EQ(fakes_.alert.contents.size(), 1U);
    EXPECT_EQ(fakes_.alert.contents[0].messageText, "[Error]");
    EXPECT_EQ(fakes_.alert.contents[0].informativeText, "Look in " + folder + "!");
    EXPECT_THAT(fakes_.alert.contents[0].buttons, ElementsAre("[OK]"));
  }

  TestDesktop fakes_;
  QTemporaryDir first_;
  QTemporaryDir second_;
  QStringList shown_;
};

TEST_F(DocumentsLinkTest, ShowsTheFirstFolderThatHasTheDocuments) {
  putReadmeInto(second_);
  openOneOf({first_.path(), second_.path()});
  EXPECT_THAT(shown_, ElementsAre(second_.path()));
  putReadmeInto(first_);
  openOneOf({first_.path(), second_.path()});
  EXPECT_THAT(shown_, ElementsAre(second_.path(), first_.path()));
  EXPECT_THAT(fakes_.alert.contents, IsEmpty());
}

TEST_F(DocumentsLinkTest, SaysWhereTheyBelongWhenTheyAreMissing) {
  openOneOf({first_.path(), second_.path()});
  EXPECT_THAT(shown_, IsEmpty());
  expectAlertAbout(first_.path());
}

TEST_F(DocumentsLinkTest, SaysWhereTheyAreWhenNothingCanShowThem) {
  putReadmeInto(second_);
  openOneOf({first_.path(), second_.path()}, false);
  expectAlertAbout(second_.path());
}

}  // namespace
}  // namespace tavril
