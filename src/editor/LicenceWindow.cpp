#include "editor/LicenceWindow.h"

#include "look/Style.h"
#include "platform/StringTable.h"

#include <QFile>
#include <QIODevice>
#include <QKeyEvent>
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

LicenceWindow::LicenceWindow(QWidget *parent)
    : QWidget(parent, Qt::Window), text_(new QPlainTextEdit(licenceText())) {
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
}

void LicenceWindow::setTexts(const StringTable &strings) {
  setWindowTitle(strings.text(u"licence"));
  text_->setAccessibleName(strings.text(u"licence"));
}

void LicenceWindow::keyPressEvent(QKeyEvent *event) {
  if (event->key() == Qt::Key_Escape) {
    close();
  } else {
    QWidget::keyPressEvent(event);
  }
}

}  // namespace tavril
