#include "platform/linux/QtModalAlert.h"

#include "platform/PlainTitle.h"
#include "platform/linux/QtMainQueue.h"

#include <QAbstractButton>
#include <QApplication>
#include <QFont>
#include <QIcon>
#include <QLabel>
#include <QLayout>
#include <QList>
#include <QMessageBox>
#include <QPointer>
#include <QPushButton>
#include <QString>
#include <QStringList>

#include <QLatin1String>

namespace tavril {

namespace {

// As wide as a sentence is comfortably read; a box breaks its second text far earlier by itself.
constexpr int textWidth = 360;
constexpr int edge = 24;  ///< round all

// The box's own names of its labels. There is a third one, for the icon.
constexpr QLatin1String messageName("qt_msgbox_label");
constexpr QLatin1String informativeName("qt_msgbox_informativelabel");

/// The message is the alert's title, and is set off as one where there is a text below it.
void layOutMessage(QLabel &label, bool isTitle) {
  QFont font = label.font();
  if (isTitle) font.setWeight(QFont::DemiBold);
  label.setFont(font);
  // The box turns wrapping off where it thinks there is room, and goes by what the label says it needs: a
  // least width would hide a need for more.
  if (label.fontMetrics().horizontalAdvance(label.text()) <= textWidth) label.setMinimumWidth(textWidth);
}

void showPlain(QMessageBox &box, const AlertContent &content) {
  box.setWindowTitle(QStringLiteral("Tavril"));
  box.setTextFormat(Qt::PlainText);
  box.setText(content.messageText);
  box.setInformativeText(content.informativeText);
  // The box does not hand its text format on to the second text, which would then guess whether it is markup.
  for (auto *label : box.findChildren<QLabel *>()) {
    if (label->objectName() == messageName) layOutMessage(*label, !content.informativeText.isEmpty());
    if (label->objectName() == informativeName) label->setMinimumWidth(textWidth);
    label->setTextFormat(Qt::PlainText);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse);
    label->setOpenExternalLinks(false);
  }
  const QIcon icon = QApplication::windowIcon();
  if (!icon.isNull()) box.setIconPixmap(icon.pixmap(48));
}

}  // namespace

QtModalAlert::QtModalAlert(QtMainQueue &queue) : queue_(queue) {}

int QtModalAlert::run(const AlertContent &content) {
  const QtMainQueue::Hold hold(queue_);
  const QStringList titles = content.buttons.isEmpty() ? QStringList{QStringLiteral("OK")} : content.buttons;

  // On the heap: it goes with its parent when the parent goes while the box is up.
  const QPointer<QMessageBox> box = new QMessageBox(QApplication::activeWindow());
  showPlain(*box, content);
  QList<QAbstractButton *> buttons;
  for (const QString &title : titles) {
    // All in one role, because only within a role does every desktop's layout keep the order.
    buttons.append(box->addButton(plainTitle(title), QMessageBox::ActionRole));
  }
  box->setDefaultButton(qobject_cast<QPushButton *>(buttons.first()));
  box->setEscapeButton(buttons.last());
  box->setWindowModality(Qt::ApplicationModal);
  // Without a picture the box indents its texts by this much, on the left only.
  constexpr int indent = 15;
  box->layout()->setContentsMargins(edge - (box->iconPixmap().isNull() ? indent : 0), edge, edge, edge);
  box->exec();

  qsizetype index = box ? buttons.indexOf(box->clickedButton()) : -1;
  if (index < 0) index = buttons.size() - 1;
  delete box;
  return firstButton + static_cast<int>(index);
}

}  // namespace tavril
