#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril::cli {

/// Lines whose cells stand in columns, each as wide as its widest cell.
class Table {
 public:
  void addRow(const QStringList &cells) { rows_.push_back(cells); }
  /// Without blanks at the ends of the lines.
  QString text() const;

 private:
  std::vector<QStringList> rows_;
};

}  // namespace tavril::cli
