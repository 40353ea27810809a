#pragma once

namespace tavril {

/// The table of a FileListView as its controller sees it. Main thread only.
class FileTable {
 public:
  virtual ~FileTable() = default;

  virtual void setRowHeight(int points) = 0;
  /// Asks the controller for all cells anew. No row is selected then.
  virtual void reloadData() = 0;
};

}  // namespace tavril
