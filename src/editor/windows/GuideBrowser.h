#pragma once

#include <QString>
#include <QTextBrowser>
#include <QTextDocument>
#include <QUrl>
#include <QVariant>
#include <QWidget>

#include <functional>

namespace tavril {

/// Shows Markdown documents of one folder. Links between documents and to headings within them are followed,
/// and wide pictures are scaled down. All other links go to `openOutside`. Alt+Left goes back.
class GuideBrowser final : public QTextBrowser {
  Q_OBJECT

 public:
  using OpenOutside = std::function<void(const QUrl &url)>;

  explicit GuideBrowser(OpenOutside openOutside, QWidget *parent = nullptr);

  /// Shows a document at the heading that the URL's fragment names.
  void open(const QUrl &url);

  /// The anchor of a heading in links, such as "what-you-see" for "What you see".
  static QString anchorOf(const QString &heading);

 protected:
  QVariant loadResource(int type, const QUrl &name) override;
  void doSetSource(const QUrl &url, QTextDocument::ResourceType type) override;

 private:
  void nameHeadings();

  OpenOutside openOutside_;
};

}  // namespace tavril
