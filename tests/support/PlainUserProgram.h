#pragma once

#include "tests/support/Program.h"

#include <QDir>
#include <QFile>
#include <QFileInfo>
#include <QTemporaryDir>

#include <unistd.h>

namespace tavril {

/// One of the programs, run by a user without special rights: nothing is forbidden to the superuser. It is a
/// copy with its texts beside it, because such a user may not be able to enter the folder of the build tree.
class PlainUserProgram {
 public:
  explicit PlainUserProgram(const QString &program) : name_(QFileInfo(program).fileName()) {
    openToAll(folder_.path());
    copy(program, name_);
    const QDir texts(QFileInfo(program).dir().filePath(QStringLiteral("strings")));
    EXPECT_TRUE(QDir(folder_.path()).mkdir(QStringLiteral("strings")));
    openToAll(folder_.filePath(QStringLiteral("strings")));
    for (const QString &file : texts.entryList(QDir::Files)) {
      copy(texts.filePath(file), QStringLiteral("strings/") + file);
    }
  }

  Program::Outcome run(const QStringList &arguments) const {
    const QString path = folder_.filePath(name_);
    if (::geteuid() != 0) return Program(path, arguments).outcome();
    const QStringList asNobody{QStringLiteral("--reuid=65534"), QStringLiteral("--regid=65534"),
                               QStringLiteral("--clear-groups"), path};
    return Program(QStringLiteral("setpriv"), asNobody + arguments).outcome();
  }

 private:
  static void openToAll(const QString &path) {
    EXPECT_TRUE(QFile::setPermissions(path, QFile::ReadOwner | QFile::WriteOwner | QFile::ExeOwner |
                                                QFile::ReadGroup | QFile::ExeGroup | QFile::ReadOther |
                                                QFile::ExeOther));
  }
  void copy(const QString &from, const QString &to) const {
    EXPECT_TRUE(QFile::copy(from, folder_.filePath(to)));
    openToAll(folder_.filePath(to));
  }

  QTemporaryDir folder_;
  QString name_;
};

}  // namespace tavril
