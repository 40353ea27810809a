#pragma once

#include <QString>

namespace tavril {

struct PosixError;

/// One line that says why a port could not be opened and what to do about it.
QString openFailureText(const PosixError &error);

}  // namespace tavril
