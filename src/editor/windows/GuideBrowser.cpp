#include "editor/windows/GuideBrowser.h"

#include <QByteArray>
#include <QChar>
#include <QImage>
#include <QMetaType>
#include <QSet>
#include <QTextBlock>
#include <QTextCharFormat>
#include <QTextCursor>
#include <QTextDocument>

#include <utility>

namespace tavril {

namespace {

/// In points. Wider pictures are scaled down to this.
constexpr int widestPicture = 760;

}  // namespace

GuideBrowser::GuideBrowser(OpenOutside openOutside, QWidget *parent)
    : QTextBrowser(parent), openOutside_(std::move(openOutside)) {
  setOpenLinks(false);
  connect(this, &QTextBrowser::anchorClicked, this,
          [this](const QUrl &link) { open(source().resolved(link)); });
}

void GuideBrowser::open(const QUrl &url) {
  if (url.isLocalFile() && url.path().endsWith(QStringLiteral(".md"))) {
    setSource(url, QTextDocument::MarkdownResource);
  } else {
    openOutside_(url);
  }
}

QString GuideBrowser::anchorOf(const QString &heading) {
  QString anchor;
  for (const QChar character : heading.toLower()) {
    if (character.isLetterOrNumber() || character == u'-' || character == u'_') anchor += character;
    if (character == u' ') anchor += u'-';
  }
  return anchor;
}

QVariant GuideBrowser::loadResource(int type, const QUrl &name) {
  QVariant resource = QTextBrowser::loadResource(type, name);
  if (type != QTextDocument::ImageResource || resource.typeId() != QMetaType::QByteArray) return resource;
  QImage picture = QImage::fromData(resource.toByteArray());
  const double pixels = widestPicture * devicePixelRatioF();
  if (picture.width() > pixels) {
    picture = picture.scaledToWidth(static_cast<int>(pixels), Qt::SmoothTransformation);
    picture.setDevicePixelRatio(devicePixelRatioF());
  }
  return picture;
}

void GuideBrowser::doSetSource(const QUrl &url, QTextDocument::ResourceType type) {
  // Qt's Markdown reader gives headings no anchors, so we load the document first and then go to the place.
  QTextBrowser::doSetSource(url.adjusted(QUrl::RemoveFragment), type);
  nameHeadings();
  if (url.hasFragment()) scrollToAnchor(url.fragment(QUrl::FullyDecoded));
}

void GuideBrowser::nameHeadings() {
  QSet<QString> taken;
  for (QTextBlock block = document()->begin(); block.isValid(); block = block.next()) {
    if (block.blockFormat().headingLevel() == 0 || block.length() < 2) continue;
    const QString plain = anchorOf(block.text());
    QString anchor = plain;
    for (int count = 1; taken.contains(anchor); ++count) anchor = plain + u'-' + QString::number(count);
    taken.insert(anchor);
    QTextCursor cursor(block);
    cursor.movePosition(QTextCursor::NextCharacter, QTextCursor::KeepAnchor);
    QTextCharFormat format;
    format.setAnchor(true);
    format.setAnchorNames({anchor});
    cursor.mergeCharFormat(format);
  }
}

}  // namespace tavril
