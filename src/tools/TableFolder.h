#pragma once

#include <QString>

#include <functional>
#include <utility>

namespace tavril {

/// The folder whose tables are listed: that of the last conversion, also of one in an earlier run, and before
/// any the user's documents folder. Main thread only.
class TableFolder {
 public:
  /// `remembered` gives what `remember` was last given, in this run or before, or nothing.
  TableFolder(std::function<QString()> remembered, std::function<void(const QString &)> remember);

  QString filepath() const;
  void setFilepath(const QString &folder);
  /// Called after each conversion, when the folder is set.
  void setChanged(std::function<void()> changed) { changed_ = std::move(changed); }

 private:
  std::function<QString()> remembered_;
  std::function<void(const QString &)> remember_;
  std::function<void()> changed_;
};

}  // namespace tavril
