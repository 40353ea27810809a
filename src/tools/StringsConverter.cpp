#include "tools/StringsConverter.h"

#include "look/SideWindow.h"
#include "tools/ConverterWindow.h"
#include "tools/FileListWindow.h"

#include <utility>

namespace tavril {

StringsConverter::StringsConverter(FilePanels &panels, UserFiles &files, TableFolder tables,
                                   const StringTable &strings, NotificationCenter &notifications, Log &log)
    : panels_(panels),
      files_(files),
      tables_(std::move(tables)),
      strings_(strings),
      notifications_(notifications),
      log_(log) {
  tables_.setChanged([this] {
    if (list_) list_->load();
  });
}

void StringsConverter::showConverter(QWidget &parent) {
  openOnce<ConverterWindow>(parent, [&] {
    return new ConverterWindow(panels_, files_, tables_, strings_, notifications_, log_, &parent);
  });
}

void StringsConverter::showTables(QWidget &parent) {
  if (list_) list_->load();
  list_ = openOnce<FileListWindow>(parent, [&] {
    return new FileListWindow(panels_, files_, tables_, strings_, notifications_, log_, &parent);
  });
}

}  // namespace tavril
