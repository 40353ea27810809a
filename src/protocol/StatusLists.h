#pragma once

#include "platform/KeyedText.h"

#include <QString>

namespace tavril {

class Log;
class StringTable;

/// A status byte as the user sees it: a numbered list and how many items it has.
struct StatusList {
  KeyedText keyedText;  ///< empty when no bit is set, else a separator line and then the items, a line each
  QString text;         ///< the same in the language of the table
  int count = 0;
};

/// Lists the errors in the status error byte. Bit 4 has no text and counts for nothing, but starts the list.
StatusList statusErrorList(int bits, const StringTable &strings, Log &log);

/// Lists the details in the status detail byte, bits 4 to 7; what bit 6 means depends on the torque policy.
StatusList statusDetailList(int bits, bool shutDownDisabled, const StringTable &strings, Log &log);

}  // namespace tavril
