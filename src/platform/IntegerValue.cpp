#include "platform/IntegerValue.h"

#include <cstdint>
#include <limits>

namespace tavril {

int integerValueOf(QStringView text) {
  qsizetype at = 0;
  while (at < text.size() && text[at].isSpace()) ++at;
  bool negative = false;
  if (at < text.size() && (text[at] == u'-' || text[at] == u'+')) negative = text[at++] == u'-';

  constexpr std::int64_t largest = std::numeric_limits<std::int32_t>::max();
  std::int64_t magnitude = 0;
  for (; at < text.size() && text[at] >= u'0' && text[at] <= u'9'; ++at) {
    magnitude = magnitude * 10 + (text[at].unicode() - u'0');
    if (magnitude > largest + 1) magnitude = largest + 1;  // one past the top: the lowest negative number
  }
  if (negative) return static_cast<int>(-magnitude);
  return static_cast<int>(magnitude > largest ? largest : magnitude);
}

}  // namespace tavril
