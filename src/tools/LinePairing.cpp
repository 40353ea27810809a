#include "tools/LinePairing.h"

namespace tavril {

LinePairing LinePairing::of(const QStringList &keyArray, const QStringList &valueArray) {
  if (valueArray.size() < keyArray.size()) return {{}, valueArray.size()};

  // Reserves the exact length, because growing could take twice the memory.
  constexpr qsizetype signs = 7;  // "" = "" ; and the line end
  qsizetype length = 0;
  for (qsizetype i = 0; i < keyArray.size(); ++i) length += keyArray[i].size() + valueArray[i].size() + signs;

  QString out;
  out.reserve(length);
  for (qsizetype i = 0; i < keyArray.size(); ++i) {
    out += u'"';
    out += keyArray[i];
    out += u"\"=\"";
    out += valueArray[i];
    out += u"\";\n";
  }
  return {out, {}};
}

}  // namespace tavril
