#pragma once

#include <QString>

namespace tavril {

/// The text as a tool tip that shows it as it stands. A tool tip guesses whether it is rich text, and what it
/// shows may come from a file or a device; so what could be taken for markup is made into markup that says
/// the same.
inline QString plainToolTip(const QString &text) {
  if (!text.contains(u'<') && !text.contains(u'&')) return text;
  return QStringLiteral("<span style=\"white-space: pre-wrap\">") + text.toHtmlEscaped() +
         QStringLiteral("</span>");
}

}  // namespace tavril
