#include "serial/PosixError.h"

#include "platform/Error.h"

namespace tavril {

PosixError PosixError::make(int code, const QString &filePath) {
  PosixError error;
  error.code = code;
  error.localizedDescription = systemErrorText(code);
  error.filePath = filePath;
  return error;
}

QString PosixError::description() const {
  return QStringLiteral("%1 (%2): %3").arg(localizedDescription, QString::number(code), filePath);
}

QString PosixError::logLine(const QString &port) const {
  return QStringLiteral("Serial port %1 encountered an error: %2").arg(port, description());
}

}  // namespace tavril
