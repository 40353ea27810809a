#include "editor/GuideWindow.h"

#include "platform/Desktop.h"
#include "platform/Languages.h"
#include "platform/ModalAlert.h"
#include "platform/NotificationCenter.h"
#include "platform/StringTable.h"

#include <QFileInfo>
#include <QKeyEvent>
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
    : QWidget(parent, Qt::Window), desktop_(desktop), browser_(new GuideBrowser(std::move(openOutside))) {
  setObjectName(QStringLiteral("GuideWindow"));
  browser_->setObjectName(QStringLiteral("guide"));
  auto *whole = new QVBoxLayout(this);
  whole->addWidget(browser_);
  resize(guideSize);
  setTexts();
  browser_->open(QUrl::fromLocalFile(guide));
  desktop_.notifications.addObserver(this, QString::fromUtf16(LanguageDidChangeNotification),
                                     [this](const Notification &) { setTexts(); });
}

GuideWindow::~GuideWindow() {
  desktop_.notifications.removeObserver(this);
}

GuideWindow *GuideWindow::open(QWidget &parent, const Desktop &desktop, const QStringList &folders,
                               const GuideBrowser::OpenOutside &openOutside) {
  auto *window = parent.findChild<GuideWindow *>(QString(), Qt::FindDirectChildrenOnly);
  if (!window) {
    const auto found = std::ranges::find_if(
        folders, [](const QString &folder) { return QFileInfo(guideIn(folder)).isFile(); });
    if (found == folders.end()) {
      const QString text = desktop.strings.text(u"documents_not_opened");
      desktop.alert.run({desktop.strings.text(u"Error"),
                         QString(text).replace(QStringLiteral("%@"), folders.value(0)),
                         {desktop.strings.text(u"OK")}});
      return nullptr;
    }
    window = new GuideWindow(desktop, guideIn(*found), openOutside, &parent);
    window->setAttribute(Qt::WA_DeleteOnClose);
  }
  window->setWindowState(window->windowState() & ~Qt::WindowMinimized);
  window->show();
  window->raise();
  window->activateWindow();
  return window;
}

void GuideWindow::keyPressEvent(QKeyEvent *event) {
  if (event->key() == Qt::Key_Escape) {
    close();
  } else {
    QWidget::keyPressEvent(event);
  }
}

void GuideWindow::setTexts() {
  setWindowTitle(desktop_.strings.text(u"user_guide"));
  browser_->setAccessibleName(desktop_.strings.text(u"user_guide"));
}

}  // namespace tavril
