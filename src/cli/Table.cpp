#include "cli/Table.h"

#include <algorithm>

namespace tavril::cli {

QString Table::text() const {
  std::vector<qsizetype> widths;
  for (const QStringList &row : rows_) {
    if (widths.size() < static_cast<std::size_t>(row.size()))
      widths.resize(static_cast<std::size_t>(row.size()));
    for (qsizetype i = 0; i < row.size(); ++i) {
      qsizetype &width = widths[static_cast<std::size_t>(i)];
      width = std::max(width, row[i].size());
    }
  }
  QString text;
  for (const QStringList &row : rows_) {
    QString line;
    for (qsizetype i = 0; i < row.size(); ++i) {
      if (i > 0) line += QStringLiteral("  ");
      line += row[i].leftJustified(widths[static_cast<std::size_t>(i)]);
    }
    while (line.endsWith(u' ')) line.chop(1);
    text += line + u'\n';
  }
  return text;
}

}  // namespace tavril::cli
