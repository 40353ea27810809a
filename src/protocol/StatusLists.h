#pragma once

#include "platform/KeyedText.h"

#include <QString>

namespace tavril {

class Log;

/// A status byte as the user sees it: a numbered list and how many items it has.
struct StatusList {
  KeyedText text;  ///< empty when no bit is set, else a separator line and then the items, a line each
  int count = 0;
};

/// "2 Items"
inline QString itemsText(const StatusList &list) {
  return QStringLiteral("%1 Items").arg(list.count);
}

/// Lists the errors in the status error byte. Bit 4 has no text and counts for nothing, but starts the list.
StatusList statusErrorList(int bits, Log &log);

/// Lists the details in the status detail byte, bits 4 to 7; what bit 6 means depends on the torque policy.
StatusList statusDetailList(int bits, bool shutDownDisabled, Log &log);

}  // namespace tavril
