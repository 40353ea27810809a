#pragma once

#include "tools/TableFolder.h"

#include <QPointer>

class QWidget;

namespace tavril {

class FileListWindow;
class FilePanels;
class Log;
class NotificationCenter;
class StringTable;
class UserFiles;

/// The translator's tool. It has two windows, each open once at most. It must outlive them.
class StringsConverter {
 public:
  StringsConverter(FilePanels &panels, UserFiles &files, TableFolder tables, const StringTable &strings,
                   NotificationCenter &notifications, Log &log);
  StringsConverter(const StringsConverter &) = delete;
  StringsConverter &operator=(const StringsConverter &) = delete;

  /// Opens the window as a child of `parent`, or brings it to the front.
  void showConverter(QWidget &parent);
  /// The same, and lists the folder again.
  void showTables(QWidget &parent);

 private:
  FilePanels &panels_;
  UserFiles &files_;
  TableFolder tables_;
  const StringTable &strings_;
  NotificationCenter &notifications_;
  Log &log_;
  QPointer<FileListWindow> list_;
};

}  // namespace tavril
