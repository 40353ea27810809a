#include "editor/screen/NoticeTypography.h"

#include "look/Style.h"

#include <QAbstractTextDocumentLayout>
#include <QChar>
#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextDocument>

#include <algorithm>

namespace tavril {

namespace {

constexpr int ruleSize = 12;  ///< pixels

}  // namespace

NoticeTypography::NoticeTypography(QTextDocument *document) : QSyntaxHighlighter(document) {
  connect(document, &QTextDocument::contentsChanged, this, &NoticeTypography::closeUpEnd);
}

void NoticeTypography::highlightBlock(const QString &text) {
  const bool isRule =
      text.size() > 2 && std::all_of(text.begin(), text.end(), [](QChar c) { return c == u'-'; });
  if (!isRule) return;
  QTextCharFormat format;
  format.setFont(Style::textFont(ruleSize));
  format.setForeground(Style::mutedText());
  setFormat(0, static_cast<int>(text.size()), format);
}

void NoticeTypography::closeUpEnd() {
  QTextBlock block = document()->lastBlock();
  const int end = block.position() + block.length();
  // Lines that are hidden already are left alone, because hiding a line calls this function again.
  for (; block.isVisible() && block.text().isEmpty() && block.blockNumber() > 0; block = block.previous()) {
    block.setVisible(false);
    block.setLineCount(0);
  }
  const int start = block.position() + block.length();
  if (start >= end) return;
  document()->markContentsDirty(start, end - start);
  // The view updates its scroll bar when the size changes; it is not told of hidden lines.
  QAbstractTextDocumentLayout *layout = document()->documentLayout();
  Q_EMIT layout->documentSizeChanged(layout->documentSize());
}

}  // namespace tavril
