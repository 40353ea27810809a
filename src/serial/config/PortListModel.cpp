#include "serial/config/PortListModel.h"

#include "platform/PlainToolTip.h"
#include "serial/config/PortDelegate.h"

#include <utility>

namespace tavril {

PortListModel::PortListModel(Count count, Text name, Text details, QObject *parent)
    : QAbstractListModel(parent),
      count_(std::move(count)),
      name_(std::move(name)),
      details_(std::move(details)),
      rows_(count_()) {}

int PortListModel::rowCount(const QModelIndex &parent) const {
  return parent.isValid() ? 0 : rows_;
}

QVariant PortListModel::data(const QModelIndex &index, int role) const {
  if (!index.isValid() || index.row() >= rows_) return {};
  if (role == Qt::DisplayRole || role == Qt::EditRole) return name_(index.row());
  if (role == Qt::ToolTipRole) return plainToolTip(details_(index.row()));
  if (role == Qt::AccessibleDescriptionRole || role == PortDelegate::detailsRole)
    return details_(index.row());
  return {};
}

void PortListModel::refresh() {
  if (rows_ > 0) Q_EMIT dataChanged(index(0), index(rows_ - 1));
}

void PortListModel::reload() {
  beginResetModel();
  rows_ = count_();
  endResetModel();
}

}  // namespace tavril
