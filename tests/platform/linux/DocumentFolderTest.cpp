#include "platform/linux/DocumentFolder.h"

#include <QCoreApplication>
#include <QDir>

#include <gtest/gtest.h>

namespace tavril {
namespace {

TEST(DocumentFolder, IsBesideTheProgramInABuildTreeAndHasAllThatTheReadmeLinksTo) {
  const QDir folder(DocumentFolder::candidates().first());
  EXPECT_EQ(folder.path(), QCoreApplication::applicationDirPath() + QStringLiteral("/documents"));
  for (const char *name : {"README.md", "LICENSE", "docs/architecture.md", "docs/choices.md"}) {
    EXPECT_TRUE(folder.exists(QString::fromLatin1(name))) << name;
  }
}

TEST(DocumentFolder, IsInTheDataFolderWhenInstalled) {
  const QDir program(QCoreApplication::applicationDirPath());
  EXPECT_EQ(DocumentFolder::candidates().last(),
            QDir::cleanPath(program.filePath(QStringLiteral("../share/tavril/documents"))));
}

}  // namespace
}  // namespace tavril
