#pragma once

#include "platform/Error.h"
#include "store/ManagedObject.h"
#include "store/ManagedObjectModel.h"

#include <QString>

#include <optional>

namespace tavril {

class PrivateFiles;

/// Keeps the objects of one model in one XML store file.
class PersistentStoreCoordinator {
 public:
  PersistentStoreCoordinator(ManagedObjectModel model, PrivateFiles &files);

  const ManagedObjectModel &managedObjectModel() const { return model_; }

  /// Reads the store file. A file that does not exist is an empty store, and is made when it is first saved.
  /// A file that cannot be read or parsed is an error and is not changed.
  std::optional<Error> addXmlStore(const QString &path);

  /// The objects in the file.
  const ObjectTable &objects() const { return objects_; }
  /// Replaces the objects in the file. After an error, the file is unchanged.
  std::optional<Error> save(const ObjectTable &objects);

 private:
  ManagedObjectModel model_;
  PrivateFiles &files_;
  QString path_;
  ObjectTable objects_;
};

}  // namespace tavril
