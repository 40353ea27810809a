#pragma once

#include "platform/Error.h"
#include "platform/ManagedObject.h"
#include "platform/ManagedObjectModel.h"

#include <QString>

#include <optional>

namespace tavril {

class PrivateFiles;

/// Keeps the objects of one model in one XML store file. Main thread only.
class PersistentStoreCoordinator {
 public:
  /// `files` must outlive the coordinator.
  PersistentStoreCoordinator(ManagedObjectModel model, PrivateFiles &files);

  const ManagedObjectModel &managedObjectModel() const { return model_; }

  /// Reads the store file; one that does not exist yet is an empty store and comes into being when first
  /// saved. A file that cannot be read or understood is an error, and stays as it is.
  std::optional<Error> addXmlStore(const QString &path);

  /// The objects as they stand in the file.
  const ObjectTable &objects() const { return objects_; }
  /// Puts these objects in place of the file's. After an error the file has what it had.
  std::optional<Error> save(const ObjectTable &objects);

 private:
  ManagedObjectModel model_;
  PrivateFiles &files_;
  QString path_;
  ObjectTable objects_;
};

}  // namespace tavril
