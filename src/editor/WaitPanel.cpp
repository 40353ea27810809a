#include "editor/WaitPanel.h"

#include "editor/Style.h"
#include "platform/StringTable.h"
#include "ui_WaitPanel.h"

#include <QHideEvent>

namespace tavril {

WaitPanel::WaitPanel(QWidget *parent) : QWidget(parent), ui_(std::make_unique<Ui::WaitPanel>()) {
  ui_->setupUi(this);
  Style::softenBold(*this);
}

WaitPanel::~WaitPanel() = default;

void WaitPanel::setTexts(const StringTable &strings) {
  ui_->CloseButton->setText(strings.text(u"stop_waiting"));
}

void WaitPanel::hideEvent(QHideEvent *event) {
  QWidget::hideEvent(event);
  if (!event->spontaneous()) ui_->CloseButtonView->hide();
}

}  // namespace tavril
