#include "tools/ConverterWindow.h"

#include "platform/PlainTitle.h"
#include "platform/StringTable.h"
#include "tools/WindowTexts.h"
#include "ui_ConverterWindow.h"

#include <QLineEdit>
#include <QPushButton>
#include <QString>

namespace tavril {

namespace {

std::unique_ptr<Ui::ConverterWindow> design(QDialog &window) {
  auto ui = std::make_unique<Ui::ConverterWindow>();
  ui->setupUi(&window);
  return ui;
}

}  // namespace

ConverterWindow::ConverterWindow(FilePanels &panels, UserFiles &files, TableFolder &tables,
                                 const StringTable &strings, NotificationCenter &notifications, Log &log,
                                 QWidget *parent)
    : SideWindow(strings, notifications, parent),
      ui_(design(*this)),
      keypath_(*ui_->keypath),
      valuepath_(*ui_->valuepath),
      controller_({keypath_, valuepath_}, panels, files, tables, strings, log) {
  for (QLineEdit *path : {ui_->keypath, ui_->valuepath}) path->setTextMargins(pathMargins);
  setTexts();
  controller_.viewDidLoad();
  connect(ui_->key, &QPushButton::clicked, this, [this] {
    controller_.key();
    chosen();
  });
  connect(ui_->value, &QPushButton::clicked, this, [this] {
    controller_.value();
    chosen();
  });
  connect(ui_->converter, &QPushButton::clicked, this, [this] { controller_.converter(); });
  connect(ui_->close, &QPushButton::clicked, this, &QDialog::reject);
  chosen();
}

ConverterWindow::~ConverterWindow() = default;

void ConverterWindow::setTexts() {
  const QString choose = strings_.text(u"choose_file");
  const QString keys = strings_.text(u"key_file");
  const QString values = strings_.text(u"value_file");
  setWindowTitle(windowTitleFor(strings_.text(u"strings_converter")));
  ui_->hint->setText(strings_.text(u"converter_hint"));
  ui_->keyCaption->setText(plainTitle(keys));
  ui_->valueCaption->setText(plainTitle(values));
  for (QLineEdit *path : {ui_->keypath, ui_->valuepath}) {
    path->setPlaceholderText(strings_.text(u"no_file_chosen"));
  }
  ui_->keypath->setAccessibleName(keys);
  ui_->valuepath->setAccessibleName(values);
  ui_->key->setText(plainTitle(choose));
  ui_->value->setText(plainTitle(choose));
  // A screen reader reads only the name, and both buttons have the same text.
  ui_->key->setAccessibleName(QStringLiteral("%1: %2").arg(keys, choose));
  ui_->value->setAccessibleName(QStringLiteral("%1: %2").arg(values, choose));
  ui_->converter->setText(plainTitle(strings_.text(u"convert")));
  ui_->close->setText(plainTitle(strings_.text(u"close")));
}

void ConverterWindow::chosen() {
  ui_->converter->setEnabled(!keypath_.text().isEmpty() && !valuepath_.text().isEmpty());
}

}  // namespace tavril
