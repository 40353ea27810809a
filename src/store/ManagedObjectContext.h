#pragma once

#include "platform/Error.h"
#include "store/ManagedObject.h"
#include "store/UndoManager.h"

#include <QString>
#include <QVariant>

#include <optional>
#include <vector>

namespace tavril {

class PersistentStoreCoordinator;

/// The objects of a store while they are edited. Nothing is written to the store before save().
class ManagedObjectContext {
 public:
  /// Something with input that is not in the objects yet, such as a field that is being edited.
  class Editor {
   public:
    virtual ~Editor() = default;
    /// Puts the input into the objects. False if they do not accept it.
    virtual bool commitEditing() = 0;
  };

  explicit ManagedObjectContext(PersistentStoreCoordinator &coordinator);
  ManagedObjectContext(const ManagedObjectContext &) = delete;
  ManagedObjectContext &operator=(const ManagedObjectContext &) = delete;

  /// Nothing if the model has no such entity.
  std::optional<ObjectId> insertObject(const QString &entityName);
  /// False if there is no such object, or the model does not allow this value. An invalid value removes the
  /// attribute's value.
  bool setValue(ObjectId object, const QString &attribute, const QVariant &value);
  /// False if there is no such object.
  bool deleteObject(ObjectId object);
  const ObjectTable &objects() const { return objects_; }

  /// Whether the objects differ from those in the store.
  bool hasChanges() const;
  /// Writes the objects to the store if they have changed. After an error they still count as changed.
  std::optional<Error> save();

  /// An editor is asked to commit from the first call to the second.
  void objectDidBeginEditing(Editor &editor);
  void objectDidEndEditing(Editor &editor);
  /// Has every editor commit its input. Stops and returns false if one cannot.
  bool commitEditing();

  /// Each insertion, deletion and new value is one step.
  UndoManager &undoManager() { return undoManager_; }

 private:
  /// Sets the state of an object, nothing for a deleted one, and registers how to undo it.
  void change(ObjectId id, std::optional<ManagedObject> state);

  PersistentStoreCoordinator &coordinator_;
  ObjectTable objects_;
  ObjectId nextId_;
  std::vector<Editor *> editors_;
  UndoManager undoManager_;
};

}  // namespace tavril
