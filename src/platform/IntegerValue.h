#pragma once

#include <QStringView>

namespace tavril {

/// The number at the beginning of a text: white space, an optional sign, and digits up to the first other
/// character. It saturates at the bounds of 32 bits, and is 0 if there is no number.
int integerValueOf(QStringView text);

}  // namespace tavril
