#include "editor/AboutWindow.h"

#include "editor/AboutPanel.h"
#include "platform/Desktop.h"
#include "platform/Languages.h"
#include "platform/NotificationCenter.h"
#include "platform/StringTable.h"

#include <QKeyEvent>
#include <QSize>
#include <QString>
#include <QVBoxLayout>

#include <utility>

namespace tavril {

namespace {

constexpr QSize aboutSize(500, 440);

}  // namespace

AboutWindow::AboutWindow(const Desktop &desktop, InformationDictionary information,
                         OpenDocuments openDocuments, QWidget *parent)
    : QWidget(parent, Qt::Window),
      desktop_(desktop),
      panel_(new AboutPanel),
      controller_(*panel_, desktop, std::move(information)) {
  setObjectName(QStringLiteral("AboutWindow"));
  auto *whole = new QVBoxLayout(this);
  whole->setContentsMargins({});
  whole->addWidget(panel_);
  panel_->focusFirst();
  setTexts();
  resize(aboutSize);
  connect(panel_, &AboutPanel::licenceWanted, this, &AboutWindow::openLicence);
  connect(panel_, &AboutPanel::documentsWanted, this, [open = std::move(openDocuments)] { open(); });
  desktop_.notifications.addObserver(this, QString::fromUtf16(LanguageDidChangeNotification),
                                     [this](const Notification &) { setTexts(); });
}

AboutWindow::~AboutWindow() {
  desktop_.notifications.removeObserver(this);
}

AboutWindow &AboutWindow::open(QWidget &parent, const Desktop &desktop,
                               const InformationDictionary &information, const OpenDocuments &openDocuments) {
  auto *about = parent.findChild<AboutWindow *>(QString(), Qt::FindDirectChildrenOnly);
  if (!about) {
    about = new AboutWindow(desktop, information, openDocuments, &parent);
    about->setAttribute(Qt::WA_DeleteOnClose);
  }
  about->setWindowState(about->windowState() & ~Qt::WindowMinimized);
  about->show();
  about->raise();
  about->activateWindow();
  return *about;
}

bool AboutWindow::event(QEvent *event) {
  const bool handled = QWidget::event(event);
  switch (event->type()) {
    case QEvent::Show:
    case QEvent::Resize:
    case QEvent::LayoutRequest:
      controller_.viewWillLayout();
      break;
    default:
      break;
  }
  return handled;
}

void AboutWindow::keyPressEvent(QKeyEvent *event) {
  if (event->key() == Qt::Key_Escape) {
    close();
  } else {
    QWidget::keyPressEvent(event);
  }
}

void AboutWindow::setTexts() {
  controller_.viewDidLoad();
  panel_->setTexts(desktop_.strings);
  if (licence_) licence_->setTexts(desktop_.strings);
}

void AboutWindow::openLicence() {
  if (!licence_) {
    licence_ = new LicenceWindow(this);
    licence_->setAttribute(Qt::WA_DeleteOnClose);
    licence_->setTexts(desktop_.strings);
  }
  licence_->show();
  licence_->raise();
  licence_->activateWindow();
}

}  // namespace tavril
