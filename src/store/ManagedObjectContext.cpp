#include "store/ManagedObjectContext.h"

#include "store/PersistentStoreCoordinator.h"

#include <algorithm>
#include <utility>

namespace tavril {

ManagedObjectContext::ManagedObjectContext(PersistentStoreCoordinator &coordinator)
    : coordinator_(coordinator),
      objects_(coordinator.objects()),
      nextId_(objects_.empty() ? 1 : objects_.rbegin()->first + 1) {}

std::optional<ObjectId> ManagedObjectContext::insertObject(const QString &entityName) {
  if (!coordinator_.managedObjectModel().hasEntity(entityName)) return {};
  const ObjectId id = nextId_++;
  change(id, ManagedObject{entityName, {}});
  return id;
}

bool ManagedObjectContext::setValue(ObjectId object, const QString &attribute, const QVariant &value) {
  const auto found = objects_.find(object);
  if (found == objects_.end()) return false;
  ManagedObject state = found->second;
  const ManagedObjectModel &model = coordinator_.managedObjectModel();
  if (!value.isValid() && model.typeOf(state.entityName, attribute).isValid()) {
    state.values.remove(attribute);
  } else if (model.accepts(state.entityName, attribute, value)) {
    state.values.insert(attribute, value);
  } else {
    return false;
  }
  if (state != found->second) change(object, std::move(state));
  return true;
}

bool ManagedObjectContext::deleteObject(ObjectId object) {
  if (!objects_.contains(object)) return false;
  change(object, {});
  return true;
}

void ManagedObjectContext::change(ObjectId id, std::optional<ManagedObject> state) {
  std::optional<ManagedObject> former;
  if (const auto found = objects_.find(id); found != objects_.end()) former = found->second;
  if (state) {
    objects_.insert_or_assign(id, std::move(*state));
  } else {
    objects_.erase(id);
  }
  undoManager_.registerUndo([this, id, former = std::move(former)] { change(id, former); });
}

bool ManagedObjectContext::hasChanges() const {
  return objects_ != coordinator_.objects();
}

std::optional<Error> ManagedObjectContext::save() {
  if (!hasChanges()) return {};
  return coordinator_.save(objects_);
}

void ManagedObjectContext::objectDidBeginEditing(Editor &editor) {
  if (std::ranges::find(editors_, &editor) == editors_.end()) editors_.push_back(&editor);
}

void ManagedObjectContext::objectDidEndEditing(Editor &editor) {
  std::erase(editors_, &editor);
}

bool ManagedObjectContext::commitEditing() {
  // An editor that is done may sign itself off, and others with it.
  for (Editor *editor : std::vector<Editor *>(editors_)) {
    if (std::ranges::find(editors_, editor) == editors_.end()) continue;
    if (!editor->commitEditing()) return false;
  }
  return true;
}

}  // namespace tavril
