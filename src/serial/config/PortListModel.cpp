#include "serial/config/PortListModel.h"

#include <utility>

namespace tavril {

PortListModel::PortListModel(Count count, Text name, Text toolTip, QObject *parent)
    : QAbstractListModel(parent),
      count_(std::move(count)),
      name_(std::move(name)),
      toolTip_(std::move(toolTip)),
      rows_(count_()) {}

int PortListModel::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : rows_;
}

QVariant PortListModel::data(const QModelIndex &index, int role) const {
  if (!index.isValid() || index.row() >= rows_) return {};
  if (role == Qt::DisplayRole || role == Qt::EditRole) return name_(index.row());
  if (role == Qt::ToolTipRole) return toolTip_(index.row());
  return {};
}

void PortListModel::reload() {
  beginResetModel();
  rows_ = count_();
  endResetModel();
}

}  // namespace tavril
