#include "serial/PortError.h"

#include <QFileInfo>
#include <QTemporaryFile>

#include <gtest/gtest.h>

#include <cerrno>

#include <grp.h>
#include <unistd.h>

namespace tavril {
namespace {

QString textFor(int code, const QString &path = QStringLiteral("/dev/ttyUSB0")) {
  return openFailureText(portError(code, path));
}

TEST(OpenFailure, EveryTextIsOneLineWithThePathAndARemedy) {
  for (const int code : {EACCES, EPERM, EBUSY, EWOULDBLOCK, ENOENT, ENXIO, ENODEV, EIO, ENOTTY, EMFILE}) {
    const QString text = textFor(code);
    EXPECT_FALSE(text.contains(u'\n')) << code;
    EXPECT_TRUE(text.contains(QStringLiteral("/dev/ttyUSB0"))) << code;
    EXPECT_TRUE(text.endsWith(u'.')) << code;
  }
}

TEST(OpenFailure, PermissionDeniedNamesTheGroupOfTheNodeAndTheCommandThatJoinsIt) {
  QTemporaryFile node;
  ASSERT_TRUE(node.open());
  const QString own = QFileInfo(node.fileName()).group();
  const group *dialout = ::getgrnam("dialout");
  QString expected = own;
  if (dialout && ::chown(qPrintable(node.fileName()), static_cast<uid_t>(-1), dialout->gr_gid) == 0) {
    expected = QStringLiteral("dialout");
  }
  const QString text = textFor(EACCES, node.fileName());
  if (expected == u"root") {
    EXPECT_TRUE(text.contains("ask an administrator"));
  } else {
    EXPECT_TRUE(text.contains(QStringLiteral("group \"%1\"").arg(expected))) << text.toStdString();
    EXPECT_TRUE(text.contains(QStringLiteral("sudo usermod -aG %1 $USER").arg(expected)));
  }
}

TEST(OpenFailure, PermissionDeniedWithoutAGroupToJoinSendsToAnAdministrator) {
  EXPECT_TRUE(textFor(EACCES, "/no/such/node").contains("ask an administrator"));
}

TEST(OpenFailure, ABusyPortNamesTheCommandThatFindsItsHolder) {
  for (const int code : {EBUSY, EWOULDBLOCK}) EXPECT_TRUE(textFor(code).contains("fuser -v /dev/ttyUSB0"));
}

TEST(OpenFailure, AnyOtherErrorIsNamed) {
  EXPECT_TRUE(textFor(EMFILE).contains("Too many open files"));
}

}  // namespace
}  // namespace tavril
