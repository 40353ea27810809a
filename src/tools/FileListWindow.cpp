#include "tools/FileListWindow.h"

#include "platform/PlainTitle.h"
#include "platform/StringTable.h"
#include "tools/TableFolder.h"
#include "tools/WindowTexts.h"
#include "ui_FileListWindow.h"

#include <QHeaderView>
#include <QList>
#include <QPushButton>
#include <QSignalBlocker>
#include <QString>
#include <QTableWidget>
#include <QTableWidgetItem>

#include <array>

namespace tavril {

namespace {

constexpr std::array<const char16_t *, 2> columns{u"name", u"number"};

}  // namespace

FileListWindow::FileListWindow(FilePanels &panels, UserFiles &files, const TableFolder &tables,
                               const StringTable &strings, NotificationCenter &notifications, Log &log,
                               QWidget *parent)
    : SideWindow(strings, notifications, parent),
      ui_(std::make_unique<Ui::FileListWindow>()),
      controller_(*this, panels, files, tables, strings, log) {
  ui_->setupUi(this);
  ui_->FileTableView->setColumnCount(static_cast<int>(columns.size()));
  QHeaderView *header = ui_->FileTableView->horizontalHeader();
  header->setDefaultAlignment(Qt::AlignLeft | Qt::AlignVCenter);
  header->setSectionResizeMode(0, QHeaderView::Stretch);
  ui_->folder->setTextMargins(pathMargins);
  setTexts();
  connect(ui_->FileTableView, &QTableWidget::itemSelectionChanged, this, &FileListWindow::selectionDidChange);
  connect(ui_->open, &QPushButton::clicked, this, [this] { controller_.open(); });
  connect(ui_->cancel, &QPushButton::clicked, this, [this] { controller_.cancel(); });
  connect(ui_->close, &QPushButton::clicked, this, &QDialog::reject);
  load();
  focusContent();
}

FileListWindow::~FileListWindow() = default;

void FileListWindow::load() {
  controller_.viewDidLoad();
  ui_->folder->setText(controller_.folder());
  reloadData();
}

void FileListWindow::setTexts() {
  const QString title = windowTitleFor(strings_.text(u"string_tables"));
  setWindowTitle(title);
  ui_->FileTableView->setAccessibleName(title);
  ui_->folder->setAccessibleName(strings_.text(u"tables_folder"));
  ui_->FileTableView->setHorizontalHeaderLabels({strings_.text(u"file_name"), strings_.text(u"file_number")});
  ui_->empty->setText(strings_.text(u"no_string_tables"));
  ui_->open->setText(plainTitle(strings_.text(u"open_file")));
  ui_->cancel->setText(plainTitle(strings_.text(u"delete_file")));
  ui_->close->setText(plainTitle(strings_.text(u"close")));
}

void FileListWindow::setRowHeight(int points) {
  ui_->FileTableView->verticalHeader()->setDefaultSectionSize(points);
}

void FileListWindow::reloadData() {
  {
    // Only the user selects rows. Adding and removing them is no selection.
    const QSignalBlocker quiet(ui_->FileTableView);
    const int rows = controller_.numberOfRowsInTableView();
    ui_->FileTableView->clearSelection();
    ui_->FileTableView->setCurrentCell(-1, -1);
    ui_->FileTableView->setRowCount(rows);
    for (int row = 0; row < rows; ++row) {
      for (int column = 0; column < static_cast<int>(columns.size()); ++column) {
        const QString identifier = QString::fromUtf16(columns[static_cast<std::size_t>(column)]);
        ui_->FileTableView->setItem(row, column,
                                    new QTableWidgetItem(controller_.viewForTableColumn(identifier, row)));
      }
    }
    ui_->pages->setCurrentWidget(rows > 0 ? ui_->tablePage : ui_->emptyPage);
  }
  // Moves the focus before the button is disabled; Qt would pass it on to the next button.
  if (ui_->cancel->hasFocus()) focusContent();
  ui_->cancel->setEnabled(false);
}

void FileListWindow::focusContent() {
  if (controller_.numberOfRowsInTableView() > 0) {
    ui_->FileTableView->setFocus();
  } else {
    ui_->close->setFocus();
  }
}

int FileListWindow::selectedRow() const {
  const QList<QTableWidgetItem *> selected = ui_->FileTableView->selectedItems();
  return selected.isEmpty() ? -1 : selected.constFirst()->row();
}

void FileListWindow::selectionDidChange() {
  const int row = selectedRow();
  ui_->cancel->setEnabled(row >= 0);
  controller_.tableViewSelectionDidChange(row);
}

}  // namespace tavril
