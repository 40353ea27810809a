#pragma once

#include <QChar>
#include <QString>

namespace tavril {

/// The text with a question mark in place of each control character. The name of a device or a program must
/// not control the terminal on which it is printed.
inline QString printableText(QString text) {
  for (QChar &c : text) {
    const bool isControl = c.category() == QChar::Other_Control || c.category() == QChar::Other_Format;
    if (isControl) c = u'?';
  }
  return text;
}

}  // namespace tavril
