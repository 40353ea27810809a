#include "platform/linux/DocumentFolder.h"

#include <QCoreApplication>
#include <QDir>

namespace tavril {

QStringList DocumentFolder::candidates() {
  const QDir program(QCoreApplication::applicationDirPath());
  return {QDir::cleanPath(program.filePath(QStringLiteral("documents"))),
          QDir::cleanPath(program.filePath(QStringLiteral("../share/tavril/documents")))};
}

}  // namespace tavril
