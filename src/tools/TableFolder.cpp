#include "tools/TableFolder.h"

#include <QStandardPaths>

#include <utility>

namespace tavril {

TableFolder::TableFolder(std::function<QString()> remembered, std::function<void(const QString &)> remember)
    : remembered_(std::move(remembered)), remember_(std::move(remember)) {}

QString TableFolder::filepath() const {
  const QString folder = remembered_();
  return folder.isEmpty() ? QStandardPaths::writableLocation(QStandardPaths::DocumentsLocation) : folder;
}

void TableFolder::setFilepath(const QString &folder) {
  remember_(folder);
  if (changed_) changed_();
}

}  // namespace tavril
