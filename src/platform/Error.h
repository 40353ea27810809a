#pragma once

#include <QString>

#include <memory>

namespace tavril {

/// An error with texts for the user, and the error that caused it, if that is known.
struct Error {
  QString domain;
  int code = 0;
  QString localizedDescription;
  QString localizedFailureReason;
  std::shared_ptr<const Error> underlyingError = nullptr;
  QString filePath = {};  ///< what it is about, where the description does not say so
};

/// The domain of failed system calls: the code is the error number.
inline constexpr const char16_t *PosixErrorDomain = u"POSIX";

/// The system's text for an error number.
QString systemErrorText(int number);

/// The error of a system call that failed on this path.
Error posixError(int number, const QString &path);

}  // namespace tavril
