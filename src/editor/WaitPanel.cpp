#include "editor/WaitPanel.h"

#include "editor/Style.h"
#include "platform/StringTable.h"
#include "ui_WaitPanel.h"

#include <QHideEvent>

namespace tavril {

WaitPanel::WaitPanel(QWidget *parent) : QWidget(parent), ui_(std::make_unique<Ui::WaitPanel>()) {
  ui_->setupUi(this);
  Style::softenBold(*this);
  ui_->CloseButtonView->installEventFilter(this);
  connect(ui_->doctor, &ButtonLabel::clicked, this, &WaitPanel::doctorWanted);
}

WaitPanel::~WaitPanel() = default;

void WaitPanel::setTexts(const StringTable &strings) {
  ui_->CloseButton->setText(strings.text(u"stop_waiting"));
  ui_->doctor->setText(strings.text(u"connection_doctor"));
}

bool WaitPanel::eventFilter(QObject *watched, QEvent *event) {
  if (event->type() == QEvent::ShowToParent) ui_->doctor->show();
  if (event->type() == QEvent::HideToParent) ui_->doctor->hide();
  return QWidget::eventFilter(watched, event);
}

void WaitPanel::hideEvent(QHideEvent *event) {
  QWidget::hideEvent(event);
  if (!event->spontaneous()) ui_->CloseButtonView->hide();
}

}  // namespace tavril
