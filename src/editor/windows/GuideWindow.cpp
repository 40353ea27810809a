#include "editor/windows/GuideWindow.h"

#include "platform/Desktop.h"
#include "platform/ModalAlert.h"
#include "platform/StringTable.h"

#include <QFileInfo>
#include <QSize>
#include <QUrl>
#include <QVBoxLayout>

#include <algorithm>
#include <utility>

namespace tavril {

namespace {

constexpr QSize guideSize(840, 720);

QString guideIn(const QString &folder) {
  return folder + QStringLiteral("/docs/user-guide.md");
}

}  // namespace

GuideWindow::GuideWindow(const Desktop &desktop, const QString &guide, GuideBrowser::OpenOutside openOutside,
                         QWidget *parent)
    : SideWindow(desktop.strings, desktop.notifications, parent, Qt::Window),
      browser_(new GuideBrowser(std::move(openOutside))) {
  setObjectName(QStringLiteral("GuideWindow"));
  browser_->setObjectName(QStringLiteral("guide"));
  auto *whole = new QVBoxLayout(this);
  whole->addWidget(browser_);
  resize(guideSize);
  setTexts();
  browser_->open(QUrl::fromLocalFile(guide));
}

void GuideWindow::open(QWidget &parent, const Desktop &desktop, const QStringList &folders,
                       const GuideBrowser::OpenOutside &openOutside) {
  openOnce<GuideWindow>(parent, [&]() -> GuideWindow * {
    const auto found = std::ranges::find_if(
        folders, [](const QString &folder) { return QFileInfo(guideIn(folder)).isFile(); });
    if (found != folders.end()) return new GuideWindow(desktop, guideIn(*found), openOutside, &parent);
    const QString text = desktop.strings.text(u"documents_not_opened");
    desktop.alert.run({desktop.strings.text(u"Error"),
                       QString(text).replace(QStringLiteral("%@"), folders.value(0)),
                       {desktop.strings.text(u"OK")}});
    return nullptr;
  });
}

void GuideWindow::setTexts() {
  setWindowTitle(strings_.text(u"user_guide"));
  browser_->setAccessibleName(strings_.text(u"user_guide"));
}

}  // namespace tavril
