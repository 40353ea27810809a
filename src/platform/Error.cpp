#include "platform/Error.h"

#include <system_error>

namespace tavril {

// The category's text is strerror's, without its buffer that threads would share.
QString systemErrorText(int number) {
  return QString::fromStdString(std::generic_category().message(number));
}

Error posixError(int number, const QString &path) {
  return {QString::fromUtf16(PosixErrorDomain),
          number,
          QStringLiteral("%1: %2").arg(path, systemErrorText(number)),
          {},
          nullptr};
}

}  // namespace tavril
