#pragma once

#include "platform/Error.h"
#include "platform/ManagedObject.h"
#include "platform/UndoManager.h"

#include <QString>
#include <QVariant>

#include <optional>
#include <vector>

namespace tavril {

class PersistentStoreCoordinator;

/// The objects of a store while they are worked on: nothing reaches the store before save(). Main thread
/// only.
class ManagedObjectContext {
 public:
  /// Something that holds input of the user which is not yet in the objects, such as a field being edited.
  class Editor {
   public:
    virtual ~Editor() = default;
    /// Puts the input into the objects; false when it cannot stand there.
    virtual bool commitEditing() = 0;
  };

  /// `coordinator` must outlive the context.
  explicit ManagedObjectContext(PersistentStoreCoordinator &coordinator);
  ManagedObjectContext(const ManagedObjectContext &) = delete;
  ManagedObjectContext &operator=(const ManagedObjectContext &) = delete;

  /// Nothing when the model has no such entity.
  std::optional<ObjectId> insertObject(const QString &entityName);
  /// False when there is no such object, or the model does not allow this value. An invalid value takes the
  /// attribute's value away.
  bool setValue(ObjectId object, const QString &attribute, const QVariant &value);
  /// False when there is no such object.
  bool deleteObject(ObjectId object);
  const ObjectTable &objects() const { return objects_; }

  /// Whether the objects differ from those in the store.
  bool hasChanges() const;
  /// Writes the objects to the store if they have changes. After an error they still have them.
  std::optional<Error> save();

  /// An editor counts from the one call to the other and is not owned.
  void objectDidBeginEditing(Editor &editor);
  void objectDidEndEditing(Editor &editor);
  /// Asks every editor for its input; false as soon as one cannot give it.
  bool commitEditing();

  /// Each insertion, deletion and new value is one step.
  UndoManager &undoManager() { return undoManager_; }

 private:
  /// Makes this the state of an object, nothing meaning that there is none, and remembers how to undo it.
  void change(ObjectId id, std::optional<ManagedObject> state);

  PersistentStoreCoordinator &coordinator_;
  ObjectTable objects_;
  ObjectId nextId_;
  std::vector<Editor *> editors_;
  UndoManager undoManager_;
};

}  // namespace tavril
