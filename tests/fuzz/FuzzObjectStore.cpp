#include "store/PersistentStoreCoordinator.h"
#include "store/StoreDocument.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"
#include "tests/store/NotesModel.h"
#include "tests/support/MemoryFiles.h"

// Any bytes as a store file: it is refused, with words and left as it is, or it is understood, and then what
// is saved again reads back the same and is the same file from then on.

namespace tavril {
namespace {

const QString path = QStringLiteral("/store.xml");

void checkObjects(const ManagedObjectModel &model, const ObjectTable &objects) {
  for (const auto &[id, object] : objects) {
    mustHold(id >= 1, "objects are numbered from 1");
    mustHold(model.hasEntity(object.entityName), "an object is of a known kind");
    for (auto value = object.values.cbegin(); value != object.values.cend(); ++value) {
      mustHold(model.accepts(object.entityName, value.key(), *value), "a value fits the data model");
    }
  }
}

}  // namespace
}  // namespace tavril

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  const QByteArray bytes(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size));
  MemoryFiles files;
  files.contents[path] = bytes;
  PersistentStoreCoordinator store(notesModel(), files);
  if (const auto error = store.addXmlStore(path)) {
    mustHold(!error->localizedFailureReason.isEmpty(), "a refusal says why");
    mustHold(store.objects().empty(), "a store that was refused has no objects");
    mustHold(store.save({}).has_value(), "and cannot be saved");
    mustHold(files.contents[path] == bytes, "and its file stays as it was");
    return 0;
  }
  const ObjectTable objects = store.objects();
  checkObjects(store.managedObjectModel(), objects);
  mustHold(!store.save(objects), "what was read can be saved");
  const QByteArray saved = files.contents[path];
  PersistentStoreCoordinator again(notesModel(), files);
  mustHold(!again.addXmlStore(path), "what was saved can be read");
  mustHold(again.objects() == objects, "and reads back the same");
  mustHold(!again.save(objects) && files.contents[path] == saved, "and is the same file when saved again");
  return 0;
}
