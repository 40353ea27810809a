#pragma once

#include <QString>

namespace tavril {

/// A failed system call on a port: the error number with its text and the path of the port.
struct PosixError {
  QString domain = QStringLiteral("POSIX");
  int code = 0;
  QString localizedDescription;
  QString filePath;

  static PosixError make(int code, const QString &filePath);
  QString description() const;
  /// How it stands in the log when it is that of a port; `port`: the description of that.
  QString logLine(const QString &port) const;
};

}  // namespace tavril
