#pragma once

#include "platform/Error.h"

#include <QString>

#include <memory>
#include <optional>

namespace tavril {

inline constexpr const char16_t *ObjectStoreErrorDomain = u"org.tavril.ObjectStore";

/// The codes of errors in the object store's domain.
enum class ObjectStoreError {
  ModelUnreadable = 1,  ///< the model is missing or is not one
  StoreUnreadable,      ///< the store file could not be read
  StoreMalformed,       ///< the store file is not a store, or not one of this model
  StoreMisplaced,       ///< no store was added, or a second one
  SaveFailed,           ///< the store file could not be written
  NotStorable,          ///< some value does not survive being written
};

inline Error objectStoreError(ObjectStoreError code, const QString &description, const QString &reason,
                              const std::optional<Error> &underlying = {}) {
  return {QString::fromUtf16(ObjectStoreErrorDomain), static_cast<int>(code), description, reason,
          underlying ? std::make_shared<const Error>(*underlying) : nullptr};
}

}  // namespace tavril
