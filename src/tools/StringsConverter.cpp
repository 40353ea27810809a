#include "tools/StringsConverter.h"

#include "platform/Languages.h"
#include "platform/NotificationCenter.h"
#include "tools/ConverterWindow.h"
#include "tools/FileListWindow.h"

#include <QDialog>
#include <QString>

#include <utility>

namespace tavril {

namespace {

void bringToFront(QDialog &window) {
  window.setAttribute(Qt::WA_DeleteOnClose);
  window.show();
  window.raise();
  window.activateWindow();
}

}  // namespace

StringsConverter::StringsConverter(FilePanels &panels, UserFiles &files, TableFolder tables,
                                   const StringTable &strings, NotificationCenter &notifications, Log &log)
    : panels_(panels),
      files_(files),
      tables_(std::move(tables)),
      strings_(strings),
      notifications_(notifications),
      log_(log) {
  notifications_.addObserver(this, QString::fromUtf16(LanguageDidChangeNotification),
                             [this](const Notification &) { setTexts(); });
  tables_.setChanged([this] {
    if (list_) list_->load();
  });
}

StringsConverter::~StringsConverter() {
  notifications_.removeObserver(this);
}

void StringsConverter::showConverter(QWidget *parent) {
  if (!converter_) converter_ = new ConverterWindow(panels_, files_, tables_, strings_, log_, parent);
  bringToFront(*converter_);
}

void StringsConverter::showTables(QWidget *parent) {
  if (list_) {
    list_->load();
  } else {
    list_ = new FileListWindow(panels_, files_, tables_, strings_, log_, parent);
  }
  bringToFront(*list_);
}

void StringsConverter::setTexts() {
  if (converter_) converter_->setTexts(strings_);
  if (list_) list_->setTexts(strings_);
}

}  // namespace tavril
