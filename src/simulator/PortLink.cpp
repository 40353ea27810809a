#include "simulator/PortLink.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QRandomGenerator>

#include <cerrno>
#include <cstdio>
#include <cstring>

#include <unistd.h>

namespace tavril::simulator {
namespace {

bool fail(QString *error, const QString &path) {
  *error =
      QStringLiteral("cannot make the link %1: %2").arg(path, QString::fromLocal8Bit(std::strerror(errno)));
  return false;
}

}  // namespace

bool PortLink::create(const QString &path, const QString &target, QString *error) {
  const QFileInfo there(path);
  if (!there.isSymbolicLink() && there.exists()) {
    *error = QStringLiteral("%1 exists and is not a symbolic link; it is left as it is").arg(path);
    return false;
  }
  // Made under another name and renamed, so that there is always a link.
  const QByteArray name = QFile::encodeName(path);
  // The name cannot be guessed, because others may write to the folder as well.
  const QByteArray passing = name + ".new" + QByteArray::number(QRandomGenerator::system()->generate64(), 36);
  if (::symlink(QFile::encodeName(target).constData(), passing.constData()) != 0) return fail(error, path);
  if (std::rename(passing.constData(), name.constData()) != 0) {
    fail(error, path);
    ::unlink(passing.constData());
    return false;
  }
  path_ = path;
  target_ = target;
  return true;
}

void PortLink::remove() {
  if (!path_.isEmpty() && QFileInfo(path_).symLinkTarget() == target_) QFile::remove(path_);
  path_.clear();
}

}  // namespace tavril::simulator
