#include "tests/vm/guest/Answerer.h"

#include <QAbstractButton>
#include <QApplication>
#include <QMessageBox>

namespace tavril::vm {

namespace {

QMessageBox *alert() {
  return qobject_cast<QMessageBox *>(QApplication::activeModalWidget());
}

}  // namespace

Answerer::Answerer() {
  QObject::connect(&timer_, &QTimer::timeout, &timer_, [this] { look(); });
  timer_.start(5);
}

bool Answerer::alertIsUp() const {
  return alert() != nullptr;
}

void Answerer::look() {
  QMessageBox *box = alert();
  if (!box || !box->isVisible()) {
    noted_ = nullptr;
    return;
  }
  if (noted_ != box) {
    noted_ = box;
    seen.append(box->informativeText().isEmpty() ? box->text() : box->informativeText());
  }
  if (leaveUp) return;
  noted_ = nullptr;
  box->buttons().constFirst()->click();
}

}  // namespace tavril::vm
