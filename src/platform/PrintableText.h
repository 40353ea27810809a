#pragma once

#include <QChar>
#include <QString>

namespace tavril {

/// The text without control characters, each of which becomes a question mark: what a device or a program
/// calls itself must not steer the terminal that it is printed on.
inline QString printableText(QString text) {
  for (QChar &c : text) {
    const bool isControl = c.category() == QChar::Other_Control || c.category() == QChar::Other_Format;
    if (isControl) c = u'?';
  }
  return text;
}

}  // namespace tavril
