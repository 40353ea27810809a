#pragma once

#include <QString>

#include <functional>
#include <utility>

namespace tavril {

/// The folder whose tables are listed: that of the last conversion, also from an earlier run, or else the
/// user's documents folder.
class TableFolder {
 public:
  /// `remembered` returns what `remember` got last, in this run or an earlier one, or an empty text.
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
