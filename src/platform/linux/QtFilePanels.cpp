#include "platform/linux/QtFilePanels.h"

#include "platform/linux/QtMainQueue.h"

#include <QApplication>
#include <QDialog>
#include <QDir>
#include <QFileDialog>
#include <QFileInfo>
#include <QMessageBox>
#include <QPointer>
#include <QStandardPaths>
#include <QStringList>
#include <QUrl>

namespace tavril {

namespace {

QString filterOf(const QStringList &types) {
  QStringList patterns;
  for (const QString &type : types) patterns.append(QStringLiteral("*.") + type);
  return patterns.join(u' ');
}

QString urlOf(const QString &path) {
  return QUrl::fromLocalFile(path).toString(QUrl::FullyEncoded);
}

/// Asks as Qt's dialog does, in its words, but about the file that will really be written.
bool mayReplace(QFileDialog &dialog, const QFileInfo &file) {
  if (!file.exists() && !file.isSymLink()) return true;
  const QPointer<QMessageBox> box =
      new QMessageBox(QMessageBox::Warning, dialog.windowTitle(),
                      QFileDialog::tr("%1 already exists.\nDo you want to replace it?").arg(file.fileName()),
                      QMessageBox::Yes | QMessageBox::No, &dialog);
  box->setTextFormat(Qt::PlainText);
  box->setDefaultButton(QMessageBox::No);
  const bool yes = box->exec() == QMessageBox::Yes;
  delete box;
  return yes;
}

}  // namespace

QtFilePanels::QtFilePanels(QtMainQueue &queue)
    : queue_(queue), folder_(QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation)) {}

FilePanels::Choice QtFilePanels::runOpenPanel(const Content &content) {
  const QtMainQueue::Hold hold(queue_);
  // On the heap: it goes with its parent when the parent goes while the panel is up.
  const QPointer<QFileDialog> dialog = new QFileDialog(QApplication::activeWindow());
  prepare(*dialog, content);
  dialog->setFileMode(QFileDialog::ExistingFile);
  Choice choice;
  if (dialog->exec() == QDialog::Accepted && dialog) {
    const QString path = dialog->selectedFiles().constFirst();
    folder_ = QFileInfo(path).path();
    choice = {OK, urlOf(path), {}};
  }
  delete dialog;
  return choice;
}

// Never the desktop's own dialog: it does not tell what stood in the name field, and some put the extension
// behind the name by themselves, where it would then stand twice.
FilePanels::Choice QtFilePanels::runSavePanel(const Content &content) {
  const QtMainQueue::Hold hold(queue_);
  const QPointer<QFileDialog> dialog = new QFileDialog(QApplication::activeWindow());
  dialog->setOption(QFileDialog::DontUseNativeDialog);
  dialog->setOption(QFileDialog::DontConfirmOverwrite);
  dialog->setAcceptMode(QFileDialog::AcceptSave);
  prepare(*dialog, content);
  dialog->setFileMode(QFileDialog::AnyFile);
  Choice choice;
  while (choice.result != OK && dialog && dialog->exec() == QDialog::Accepted && dialog) {
    const QFileInfo typed(dialog->selectedFiles().constFirst());
    const QString path = typed.filePath() + u'.' + content.allowedTypes.value(0);
    if (!mayReplace(*dialog, QFileInfo(path))) continue;
    folder_ = typed.path();
    choice = {OK, urlOf(path), typed.fileName()};
  }
  delete dialog;
  return choice;
}

void QtFilePanels::prepare(QFileDialog &dialog, const Content &content) const {
  dialog.setWindowTitle(content.title);
  dialog.setNameFilter(filterOf(content.allowedTypes));
  dialog.setDirectory(QDir(folder_).exists() ? folder_ : QDir::homePath());
  dialog.setWindowModality(Qt::ApplicationModal);
}

}  // namespace tavril
