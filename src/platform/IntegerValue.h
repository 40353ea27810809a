#pragma once

#include <QStringView>

namespace tavril {

/// The integer value of a screen text: leading white space is skipped, an optional sign taken, then digits up
/// to the first other character. Saturates at the bounds of 32 bits; 0 when no number leads the text.
int integerValueOf(QStringView text);

}  // namespace tavril
