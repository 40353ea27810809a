#include "editor/WaitPanel.h"

#include "look/Style.h"
#include "platform/PlainTitle.h"
#include "platform/StringTable.h"
#include "ui_WaitPanel.h"

#include <QEvent>

namespace tavril {

WaitPanel::WaitPanel(QWidget *parent) : QWidget(parent), ui_(std::make_unique<Ui::WaitPanel>()) {
  ui_->setupUi(this);
  Style::softenBold(*this);
  ui_->CloseButtonView->installEventFilter(this);
  connect(ui_->doctor, &ButtonLabel::clicked, this, &WaitPanel::doctorWanted);
}

WaitPanel::~WaitPanel() = default;

void WaitPanel::setTexts(const StringTable &strings) {
  ui_->CloseButton->setText(plainTitle(strings.text(u"stop_waiting")));
  ui_->doctor->setText(plainTitle(strings.text(u"connection_doctor")));
}

bool WaitPanel::eventFilter(QObject *watched, QEvent *event) {
  if (event->type() == QEvent::ShowToParent) ui_->doctor->show();
  if (event->type() == QEvent::HideToParent) ui_->doctor->hide();
  return QWidget::eventFilter(watched, event);
}

void WaitPanel::hideCloseButton() {
  ui_->CloseButtonView->hide();
}

}  // namespace tavril
