#include "editor/panels/PanelBackdrop.h"

#include "editor/screen/ButtonLabel.h"
#include "look/Style.h"

#include <QColor>
#include <QGridLayout>
#include <QKeyEvent>
#include <QList>
#include <QPainter>
#include <QString>

namespace tavril {

namespace {

constexpr int dimming = 175;  // of 255

/// The buttons that can have the focus, in the order of the panel.
QList<ButtonLabel *> usableButtons(const QWidget &panel) {
  QList<ButtonLabel *> buttons = panel.findChildren<ButtonLabel *>();
  buttons.removeIf(
      [&panel](const ButtonLabel *button) { return !button->isVisibleTo(&panel) || !button->isEnabled(); });
  return buttons;
}

ButtonLabel *buttonFor(const QWidget &panel, const QString &identifier) {
  for (ButtonLabel *button : usableButtons(panel)) {
    if (button->property("identifier").toString() == identifier) return button;
  }
  return nullptr;
}

ButtonLabel *cancelButton(const QWidget &panel) {
  ButtonLabel *cancel = buttonFor(panel, QStringLiteral("cancel"));
  return cancel ? cancel : buttonFor(panel, QStringLiteral("close"));
}

}  // namespace

PanelBackdrop::PanelBackdrop(QWidget *parent) : QWidget(parent) {
  setFocusPolicy(Qt::NoFocus);
  setMouseTracking(true);
}

void PanelBackdrop::setPanel(QWidget *panel) {
  if (!layout()) {
    auto *grid = new QGridLayout(this);
    grid->setContentsMargins({});
  }
  static_cast<QGridLayout *>(layout())->addWidget(panel, 0, 0, Qt::AlignCenter);
}

void PanelBackdrop::setVisible(bool visible) {
  Q_EMIT changing();
  QWidget::setVisible(visible);
}

bool PanelBackdrop::event(QEvent *event) {
  switch (event->type()) {
    case QEvent::MouseButtonPress:
    case QEvent::MouseButtonRelease:
    case QEvent::MouseButtonDblClick:
    case QEvent::MouseMove:
    case QEvent::Wheel:
    case QEvent::ContextMenu:
      event->accept();
      return true;
    default:
      return QWidget::event(event);
  }
}

void PanelBackdrop::keyPressEvent(QKeyEvent *event) {
  if (event->key() != Qt::Key_Escape) {
    QWidget::keyPressEvent(event);
  } else if (auto *cancel = cancelButton(*this); cancel && !event->isAutoRepeat()) {
    cancel->click();
  }
}

void PanelBackdrop::showEvent(QShowEvent *event) {
  QWidget::showEvent(event);
  raise();
  focusBefore_ = window()->focusWidget();
  // Buttons that were clicked the last time are still black.
  for (ButtonLabel *button : findChildren<ButtonLabel *>()) button->setTextColor(Style::restText());
  // Cancel gets the focus, so that Enter on an unexpected question does no harm. The reason is that of an
  // alert, so that a field does not take this for the user's leaving.
  if (auto *cancel = cancelButton(*this)) cancel->setFocus(Qt::ActiveWindowFocusReason);
}

void PanelBackdrop::hideEvent(QHideEvent *event) {
  QWidget::hideEvent(event);
  if (focusBefore_ && focusBefore_->isVisible() && focusBefore_->isEnabled()) {
    // The focus only returns, so that the field does not replace the notice that is shown.
    focusBefore_->setFocus(Qt::ActiveWindowFocusReason);
  }
  focusBefore_.clear();
}

void PanelBackdrop::paintEvent(QPaintEvent *) {
  QPainter(this).fillRect(rect(), QColor(0, 0, 0, dimming));
}

bool PanelBackdrop::focusNextPrevChild(bool next) {
  const QList<ButtonLabel *> buttons = usableButtons(*this);
  if (buttons.isEmpty()) return true;
  const qsizetype current = buttons.indexOf(qobject_cast<ButtonLabel *>(window()->focusWidget()));
  const qsizetype count = buttons.size();
  const qsizetype target = current < 0 ? 0 : (current + (next ? 1 : count - 1)) % count;
  buttons[target]->setFocus(next ? Qt::TabFocusReason : Qt::BacktabFocusReason);
  return true;
}

}  // namespace tavril
