#pragma once

#include "platform/Error.h"

#include <QString>

namespace tavril {

/// The error of a system call that failed on the port at this path.
Error portError(int number, const QString &path);

/// Such an error in the log; `port`: the port's description.
QString portErrorLine(const Error &error, const QString &port);

/// One line that says why a port could not be opened and what to do about it.
QString openFailureText(const Error &error);

}  // namespace tavril
