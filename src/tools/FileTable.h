#pragma once

namespace tavril {

/// The table of a FileListView as its controller sees it.
class FileTable {
 public:
  virtual ~FileTable() = default;

  virtual void setRowHeight(int points) = 0;
  /// Asks the controller for all cells again. No row is selected afterwards.
  virtual void reloadData() = 0;
};

}  // namespace tavril
