#pragma once

#include <QString>
#include <QSyntaxHighlighter>
#include <QTextDocument>

namespace tavril {

/// How the text in the notice view is set, without a change to the text itself. The row of hyphens between a
/// notice and the list below it becomes a quiet rule, small enough for one line: in the notice's own size it
/// would be broken in two. Empty lines at the end take no room, so that they make nothing scroll.
class NoticeTypography final : public QSyntaxHighlighter {
  Q_OBJECT

 public:
  /// The document, which is a plain text edit's, owns this.
  explicit NoticeTypography(QTextDocument *document);

 protected:
  void highlightBlock(const QString &text) override;

 private:
  void closeUpEnd();
};

}  // namespace tavril
