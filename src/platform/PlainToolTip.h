#pragma once

#include <QString>

namespace tavril {

/// The text as a tool tip that shows exactly this text. Qt guesses whether a tool tip is markup, and the text
/// may come from a file or a device. A text that could be markup is therefore converted to markup that shows
/// it.
inline QString plainToolTip(const QString &text) {
  if (!text.contains(u'<') && !text.contains(u'&')) return text;
  return QStringLiteral("<span style=\"white-space: pre-wrap\">") + text.toHtmlEscaped() +
         QStringLiteral("</span>");
}

}  // namespace tavril
