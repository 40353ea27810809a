#include "editor/AboutPanel.h"

#include "editor/WidgetElement.h"
#include "look/Style.h"
#include "platform/PlainTitle.h"
#include "platform/StringTable.h"
#include "ui_AboutPanel.h"

#include <QAbstractButton>
#include <QPalette>

namespace tavril {

namespace {

constexpr int titleSize = 22;

}  // namespace

AboutPanel::AboutPanel(QWidget *parent) : QWidget(parent), ui_(std::make_unique<Ui::AboutPanel>()) {
  ui_->setupUi(this);
  Style::softenBold(*this);
  Style::setLabelSize(*ui_->abouttitle, titleSize);
  // The text then begins in line with the title.
  ui_->aboutContent->document()->setDocumentMargin(0);
  connect(ui_->licence, &QAbstractButton::clicked, this, &AboutPanel::licenceWanted);
  connect(ui_->documents, &QAbstractButton::clicked, this, &AboutPanel::documentsWanted);
}

AboutPanel::~AboutPanel() = default;

void AboutPanel::setTexts(const StringTable &strings) {
  ui_->licence->setText(plainTitle(strings.text(u"licence")));
  ui_->documents->setText(plainTitle(strings.text(u"documents")));
  ui_->aboutContent->setAccessibleName(strings.text(u"tavril"));  // "about" is the name of the title above
}

void AboutPanel::focusFirst() {
  ui_->licence->setFocus();
}

ScreenElement &AboutPanel::element(QStringView name) {
  auto *found = findChild<QWidget *>(name.toString());
  if (!found) qFatal("The About panel has no element named \"%s\".", qPrintable(name.toString()));
  auto &element = elements_[found];
  if (!element) element = WidgetElement::over(*found);
  return *element;
}

void AboutPanel::setTitle(const QString &title) {
  window()->setWindowTitle(title);
}

void AboutPanel::setWindowBackground(const QColor &color) {
  QWidget &holder = *window();
  if (!holder.styleSheet().isEmpty()) holder.setStyleSheet(QString());
  holder.setAutoFillBackground(true);
  if (holder.palette().color(holder.backgroundRole()) == color) return;
  QPalette palette = holder.palette();
  palette.setColor(holder.backgroundRole(), color);
  holder.setPalette(palette);
}

}  // namespace tavril
