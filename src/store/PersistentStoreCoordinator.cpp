#include "store/PersistentStoreCoordinator.h"

#include "platform/PrivateFiles.h"
#include "store/ObjectStoreError.h"
#include "store/StoreDocument.h"

#include <QByteArray>

#include <utility>

namespace tavril {

namespace {

std::optional<Error> saveError(ObjectStoreError code, const QString &reason,
                               const std::optional<Error> &underlying = {}) {
  return objectStoreError(code, QStringLiteral("The data could not be saved."), reason, underlying);
}

std::optional<Error> openError(ObjectStoreError code, const QString &reason,
                               const std::optional<Error> &underlying = {}) {
  return objectStoreError(code, QStringLiteral("The saved data could not be opened."), reason, underlying);
}

}  // namespace

PersistentStoreCoordinator::PersistentStoreCoordinator(ManagedObjectModel model, PrivateFiles &files)
    : model_(std::move(model)), files_(files) {}

std::optional<Error> PersistentStoreCoordinator::addXmlStore(const QString &path) {
  if (!path_.isEmpty()) {
    return openError(ObjectStoreError::StoreMisplaced, QStringLiteral("A store is already open."));
  }
  std::optional<QByteArray> bytes;
  if (const auto error = files_.read(path, StoreDocument::largestSize, bytes)) {
    return openError(ObjectStoreError::StoreUnreadable,
                     QStringLiteral("The file \"%1\" could not be read.").arg(path), error);
  }
  QString problem;
  if (bytes && !StoreDocument::parse(*bytes, model_, objects_, problem)) {
    return openError(
        ObjectStoreError::StoreMalformed,
        QStringLiteral("The file \"%1\" is damaged or of another version. %2").arg(path, problem));
  }
  path_ = path;
  return {};
}

std::optional<Error> PersistentStoreCoordinator::save(const ObjectTable &objects) {
  if (path_.isEmpty()) {
    return saveError(ObjectStoreError::StoreMisplaced, QStringLiteral("No store is open."));
  }
  const QByteArray bytes = StoreDocument::write(model_, objects);
  // Not every text can stand in XML, and a store must not grow beyond what will be read again. Better to find
  // out while the old file is still there.
  ObjectTable readBack;
  QString problem;
  if (!StoreDocument::parse(bytes, model_, readBack, problem)) {
    return saveError(ObjectStoreError::NotStorable, problem);
  }
  if (readBack != objects) {
    return saveError(ObjectStoreError::NotStorable, QStringLiteral("A value cannot be stored in a file."));
  }
  if (const auto error = files_.replace(path_, bytes)) {
    return saveError(ObjectStoreError::SaveFailed,
                     QStringLiteral("The file \"%1\" could not be written.").arg(path_), error);
  }
  objects_ = objects;
  return {};
}

}  // namespace tavril
