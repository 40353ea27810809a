#include "tools/FileSystem.h"

#include "platform/Log.h"
#include "platform/UserFiles.h"
#include "tools/FileSystemFunction.h"
#include "tools/TextFile.h"

namespace tavril {

void FileSystem::CreatFolder(const QString &folder, const QString &FolderName) {
  const auto error = files_.makeFolder(fullPath(folder, FolderName));
  report(error ? QStringLiteral("Creat Folder Fail") : QStringLiteral("Creat Folder Succeed"));
}

void FileSystem::CreatFile(const QString &folder, const QString &FileName) {
  // Kept: C88.
  (void)files_.createEmpty(fullPath(folder, FileName));
  report(QStringLiteral("Creat Succeed"));
}

void FileSystem::ReadFile(const QString &folder, const QString &FileName) {
  const TextFile file = TextFile::read(files_, fullPath(folder, FileName));
  report(file.text.value_or(QStringLiteral("Read File Fail")));
}

void FileSystem::DeleteFile(const QString &folder, const QString &FileName) {
  const QString path = fullPath(folder, FileName);
  // Without a name, the path would be that of the folder.
  if (FileName.isEmpty() || !files_.isDeletable(path)) return;
  if (const auto error = files_.remove(path)) {
    log_.warn(QStringLiteral("Error removing file at path: ") + error->localizedDescription);
    report(QStringLiteral("Delete %1 is Fail").arg(FileName));
    return;
  }
  report(QStringLiteral("Delete Succeed"));
}

QString FileSystem::fullPath(const QString &folder, const QString &name) {
  QString path = folder + u'/' + name;
  log_.write(path);
  return path;
}

void FileSystem::report(const QString &result) const {
  if (delegate) delegate->FileResult(result);
}

}  // namespace tavril
