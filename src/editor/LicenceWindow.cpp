#include "editor/LicenceWindow.h"

#include "look/Style.h"
#include "platform/Desktop.h"
#include "platform/StringTable.h"

#include <QFile>
#include <QIODevice>
#include <QPalette>
#include <QPlainTextEdit>
#include <QSize>
#include <QString>
#include <QVBoxLayout>

namespace tavril {

namespace {

constexpr QSize licenceSize(660, 560);

QString licenceText() {
  QFile file(QStringLiteral(":/licence/LICENSE"));
  if (!file.open(QIODevice::ReadOnly)) qFatal("The program was built without its licence.");
  return QString::fromUtf8(file.readAll());
}

}  // namespace

LicenceWindow::LicenceWindow(const Desktop &desktop, QWidget *parent)
    : SideWindow(desktop.strings, desktop.notifications, parent, Qt::Window),
      text_(new QPlainTextEdit(licenceText())) {
  setObjectName(QStringLiteral("LicenceWindow"));
  QPalette black = palette();
  black.setColor(backgroundRole(), Style::aboutGround());
  setPalette(black);
  setAutoFillBackground(true);
  text_->setObjectName(QStringLiteral("licenceText"));
  text_->setReadOnly(true);
  text_->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
  text_->setTabChangesFocus(true);
  auto *whole = new QVBoxLayout(this);
  whole->addWidget(text_);
  resize(licenceSize);
  setTexts();
}

void LicenceWindow::setTexts() {
  setWindowTitle(strings_.text(u"licence"));
  text_->setAccessibleName(strings_.text(u"licence"));
}

}  // namespace tavril
