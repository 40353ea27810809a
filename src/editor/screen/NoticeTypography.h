#pragma once

#include <QString>
#include <QSyntaxHighlighter>
#include <QTextDocument>

namespace tavril {

/// Formats the text of the notice view without changing the text. The row of hyphens between a notice and the
/// list below it becomes a thin rule, small enough for one line; in the size of the notice it would be broken
/// in two. Empty lines at the end get no height, so that they cause no scrolling.
class NoticeTypography final : public QSyntaxHighlighter {
  Q_OBJECT

 public:
  /// The document of a plain text edit. It owns this object.
  explicit NoticeTypography(QTextDocument *document);

 protected:
  void highlightBlock(const QString &text) override;

 private:
  void closeUpEnd();
};

}  // namespace tavril
