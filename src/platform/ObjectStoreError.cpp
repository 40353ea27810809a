#include "platform/ObjectStoreError.h"

#include <memory>

namespace tavril {

Error objectStoreError(ObjectStoreError code, const QString &description, const QString &reason,
                       const std::optional<Error> &underlying) {
  return {QString::fromUtf16(ObjectStoreErrorDomain), static_cast<int>(code), description, reason,
          underlying ? std::make_shared<const Error>(*underlying) : nullptr};
}

}  // namespace tavril
