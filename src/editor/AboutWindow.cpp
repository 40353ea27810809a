#include "editor/AboutWindow.h"

#include "editor/AboutPanel.h"
#include "editor/LicenceWindow.h"
#include "platform/Desktop.h"

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
    : SideWindow(desktop.strings, desktop.notifications, parent, Qt::Window),
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
}

void AboutWindow::open(QWidget &parent, const Desktop &desktop, const InformationDictionary &information,
                       const OpenDocuments &openDocuments) {
  openOnce<AboutWindow>(parent,
                        [&] { return new AboutWindow(desktop, information, openDocuments, &parent); });
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

void AboutWindow::setTexts() {
  controller_.viewDidLoad();
  panel_->setTexts(strings_);
}

void AboutWindow::openLicence() {
  openOnce<LicenceWindow>(*this, [this] { return new LicenceWindow(desktop_, this); });
}

}  // namespace tavril
