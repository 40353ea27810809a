#include "editor/windows/AboutWindow.h"

#include "editor/screen/WidgetElement.h"
#include "editor/windows/LicenceWindow.h"
#include "look/Style.h"
#include "platform/Desktop.h"
#include "platform/PlainTitle.h"
#include "platform/StringTable.h"
#include "ui_AboutWindow.h"

#include <QAbstractButton>
#include <QPalette>
#include <QSize>

#include <utility>

namespace tavril {

namespace {

constexpr QSize aboutSize(500, 440);
constexpr int titleSize = 22;

}  // namespace

AboutWindow::AboutWindow(const Desktop &desktop, InformationDictionary information,
                         OpenDocuments openDocuments, QWidget *parent)
    : SideWindow(desktop.strings, desktop.notifications, parent, Qt::Window),
      desktop_(desktop),
      ui_(std::make_unique<Ui::AboutWindow>()),
      controller_(*this, desktop, std::move(information)) {
  ui_->setupUi(this);
  Style::softenBold(*this);
  Style::setLabelSize(*ui_->abouttitle, titleSize);
  // Aligns the text with the title.
  ui_->aboutContent->document()->setDocumentMargin(0);
  ui_->licence->setFocus();
  setTexts();
  resize(aboutSize);
  connect(ui_->licence, &QAbstractButton::clicked, this, &AboutWindow::openLicence);
  connect(ui_->documents, &QAbstractButton::clicked, this, [open = std::move(openDocuments)] { open(); });
}

AboutWindow::~AboutWindow() = default;

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
  ui_->licence->setText(plainTitle(strings_.text(u"licence")));
  ui_->documents->setText(plainTitle(strings_.text(u"documents")));
  ui_->aboutContent->setAccessibleName(strings_.text(u"tavril"));  // "about" is the name of the title above
}

ScreenElement &AboutWindow::element(QStringView name) {
  auto *found = findChild<QWidget *>(name.toString());
  if (!found) qFatal("About has no element named \"%s\".", qPrintable(name.toString()));
  auto &element = elements_[found];
  if (!element) element = WidgetElement::over(*found);
  return *element;
}

void AboutWindow::setWindowBackground(const QColor &color) {
  if (!styleSheet().isEmpty()) setStyleSheet(QString());
  setAutoFillBackground(true);
  if (palette().color(backgroundRole()) == color) return;
  QPalette colours = palette();
  colours.setColor(backgroundRole(), color);
  setPalette(colours);
}

void AboutWindow::openLicence() {
  openOnce<LicenceWindow>(*this, [this] { return new LicenceWindow(desktop_, this); });
}

}  // namespace tavril
