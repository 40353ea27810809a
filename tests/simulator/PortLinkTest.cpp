#include "simulator/PortLink.h"

#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <unistd.h>

namespace tavril::simulator {
namespace {

class PortLinkTest : public testing::Test {
 protected:
  QString path(const QString &name) const { return folder_.filePath(name); }
  QString target(const QString &name) const { return QFileInfo(path(name)).symLinkTarget(); }

  QTemporaryDir folder_;
  QString error_;
};

TEST_F(PortLinkTest, PointsToTheTerminalAndGoesWithItsOwner) {
  {
    PortLink link;
    ASSERT_TRUE(link.create(path(QStringLiteral("servo")), QStringLiteral("/dev/pts/90"), &error_));
    EXPECT_EQ(target(QStringLiteral("servo")), QStringLiteral("/dev/pts/90"));
  }
  EXPECT_FALSE(QFileInfo(path(QStringLiteral("servo"))).isSymbolicLink());
}

TEST_F(PortLinkTest, ReplacesAnOlderLink) {
  ASSERT_TRUE(QFile::link(QStringLiteral("/nowhere/at/all"), path(QStringLiteral("servo"))));
  PortLink link;
  ASSERT_TRUE(link.create(path(QStringLiteral("servo")), QStringLiteral("/dev/pts/91"), &error_));
  EXPECT_EQ(target(QStringLiteral("servo")), QStringLiteral("/dev/pts/91"));
}

TEST_F(PortLinkTest, ItsPassingNameCannotBeKnown) {
  // Somebody has taken the name that could have been guessed.
  const QString guessed = path(QStringLiteral("servo.new%1").arg(::getpid()));
  ASSERT_TRUE(QFile::link(path(QStringLiteral("elsewhere")), guessed));
  PortLink link;
  EXPECT_TRUE(link.create(path(QStringLiteral("servo")), QStringLiteral("/dev/pts/92"), &error_));
  EXPECT_EQ(target(QStringLiteral("servo")), QStringLiteral("/dev/pts/92"));
}

TEST_F(PortLinkTest, LeavesAFileAloneAndSaysSo) {
  QFile file(path(QStringLiteral("notes")));
  ASSERT_TRUE(file.open(QIODevice::WriteOnly));
  file.write("kept");
  file.close();
  {
    PortLink link;
    EXPECT_FALSE(link.create(file.fileName(), QStringLiteral("/dev/pts/92"), &error_));
  }
  EXPECT_EQ(error_,
            file.fileName() + QStringLiteral(" exists and is not a symbolic link; it is left as it is"));
  ASSERT_TRUE(file.open(QIODevice::ReadOnly));
  EXPECT_EQ(file.readAll(), QByteArray("kept"));
}

TEST_F(PortLinkTest, LeavesAFolderAlone) {
  PortLink link;
  EXPECT_FALSE(link.create(folder_.path(), QStringLiteral("/dev/pts/93"), &error_));
  EXPECT_TRUE(QFileInfo(folder_.path()).isDir());
}

TEST_F(PortLinkTest, SaysWhyItCannotBeMade) {
  PortLink link;
  EXPECT_FALSE(link.create(path(QStringLiteral("missing/servo")), QStringLiteral("/dev/pts/94"), &error_));
  EXPECT_TRUE(error_.endsWith(QStringLiteral("No such file or directory"))) << error_.toStdString();
}

TEST_F(PortLinkTest, LeavesALinkThatPointsElsewhereByNow) {
  PortLink link;
  ASSERT_TRUE(link.create(path(QStringLiteral("servo")), QStringLiteral("/dev/pts/95"), &error_));
  PortLink later;
  ASSERT_TRUE(later.create(path(QStringLiteral("servo")), QStringLiteral("/dev/pts/96"), &error_));
  link.remove();
  EXPECT_EQ(target(QStringLiteral("servo")), QStringLiteral("/dev/pts/96"));
}

}  // namespace
}  // namespace tavril::simulator
