#include "serial/PortError.h"

#include <QFileInfo>

#include <cerrno>

namespace tavril {

namespace {

QString permissionText(const QString &path) {
  const QString group = QFileInfo(path).group();
  if (group.isEmpty() || group == u"root") {
    return QStringLiteral("permission denied on %1: ask an administrator for access to it.").arg(path);
  }
  return QStringLiteral(
             "permission denied on %1: it belongs to the group \"%2\". Add yourself to the group with \"sudo "
             "usermod -aG %2 $USER\", then log out and in again.")
      .arg(path, group);
}

}  // namespace

Error portError(int number, const QString &path) {
  return {QString::fromUtf16(PosixErrorDomain), number, systemErrorText(number), {}, nullptr, path};
}

QString portErrorLine(const Error &error, const QString &port) {
  return QStringLiteral("Serial port %1 encountered an error: %2 (%3): %4")
      .arg(port, error.localizedDescription, QString::number(error.code), error.filePath);
}

QString openFailureText(const Error &error) {
  const QString &path = error.filePath;
  switch (error.code) {
    case EACCES:
    case EPERM:
      return permissionText(path);
    case EBUSY:
    case EWOULDBLOCK:
      return QStringLiteral(
                 "%1 is in use by another program: close that program and try again (\"fuser -v %1\" "
                 "shows which it is).")
          .arg(path);
    case ENOENT:
      return QStringLiteral(
                 "%1 does not exist any more: check the cable, plug the adapter in again, then retry.")
          .arg(path);
    case ENXIO:
    case ENODEV:
    case EIO:
      return QStringLiteral("the device behind %1 does not respond: unplug the adapter and plug it in again.")
          .arg(path);
    default:
      return QStringLiteral("%1 could not be opened: %2. Check that it is the servo adapter's port.")
          .arg(path, error.localizedDescription);
  }
}

}  // namespace tavril
