#include "store/ManagedObjectModel.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"

// Any bytes as a data model: it is refused with words, or its names are names and its types are known.

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  Error error;
  const auto model = ManagedObjectModel::parse(
      QByteArray(reinterpret_cast<const char *>(data), static_cast<qsizetype>(size)), error);
  if (!model) {
    mustHold(!error.localizedFailureReason.isEmpty(), "a refusal says why");
    return 0;
  }
  for (const QString &entity : model->entityNames()) {
    mustHold(!entity.isEmpty() && entity.size() <= 128, "an entity has a name of bearable length");
    mustHold(model->hasEntity(entity), "an entity is found by its name");
    mustHold(!model->typeOf(entity, QString()).isValid(), "no attribute is without a name");
    mustHold(!model->accepts(entity, QString(), 1), "and none of no name is accepted");
  }
  mustHold(!model->hasEntity(QString()), "no entity is without a name");
  return 0;
}
