#include "tools/FileListView.h"

#include "platform/FilePanels.h"
#include "platform/Log.h"
#include "platform/StringTable.h"
#include "platform/UserFiles.h"
#include "tools/FileSystem.h"
#include "tools/FileTable.h"
#include "tools/TableFolder.h"

namespace tavril {

FileListView::FileListView(FileTable &FileTableView, FilePanels &panels, UserFiles &files,
                           const TableFolder &tables, const StringTable &strings, Log &log)
    : FileTableView_(FileTableView),
      panels_(panels),
      files_(files),
      tables_(tables),
      strings_(strings),
      log_(log) {}

FileListView::~FileListView() = default;

void FileListView::viewDidLoad() {
  FileSystem_ = std::make_unique<FileSystem>(files_, log_);
  FileSystem_->delegate = this;
  folder_ = tables_.filepath();
  SelectFileName_.clear();
  list();
  constexpr int rowHeight = 30;
  FileTableView_.setRowHeight(rowHeight);
  // Kept: C91.
  a_ = QStringList{QStringLiteral("1"), QStringLiteral("2"), QStringLiteral("3"), QStringLiteral("4")};
}

void FileListView::list() {
  hFiles_.clear();
  // Kept: C92.
  for (const QString &name : files_.names(folder_)) {
    if (name.endsWith(u".h", Qt::CaseSensitive)) hFiles_.append(name);
  }
  log_.write(listText(hFiles_));
}

void FileListView::open() {
  const FilePanels::Choice choice =
      panels_.runOpenPanel({strings_.text(u"open_file"), {QStringLiteral("txt"), QStringLiteral("TEXT")}});
  switch (choice.result) {
    case FilePanels::OK:
      log_.write(QStringLiteral("file opened ") + choice.url);
      break;
    case FilePanels::Cancel:
      log_.write(QStringLiteral("Cancel button was pressed"));
      break;
    default:
      log_.write(QStringLiteral("Error"));
  }
}

void FileListView::cancel() {
  if (!SelectFileName_.isEmpty()) FileSystem_->DeleteFile(folder_, SelectFileName_);
  list();
  FileTableView_.reloadData();
}

int FileListView::numberOfRowsInTableView() const {
  return static_cast<int>(hFiles_.size());
}

QString FileListView::viewForTableColumn(const QString &identifier, int row) {
  log_.write(identifier);
  // Kept: C93.
  return identifier == u"name" ? hFiles_.value(row) : QStringLiteral("3");
}

void FileListView::tableViewSelectionDidChange(int row) {
  if (row < 0 || row >= hFiles_.size()) return;
  const QString name = hFiles_[row];
  log_.write(QStringLiteral("Select Row is %1,FileName=%2").arg(QString::number(row), name));
  FileSystem_->ReadFile(folder_, name);
  SelectFileName_ = name;
}

void FileListView::FileResult(const QString &result) {
  log_.write(result);
}

}  // namespace tavril
