#pragma once

#include <QModelIndex>
#include <QPainter>
#include <QSize>
#include <QStyleOptionViewItem>
#include <QStyledItemDelegate>

namespace tavril {

/// An entry of the port list: the port's name, and what is known about the port on a line below it. Both are
/// plain text.
class PortDelegate final : public QStyledItemDelegate {
  Q_OBJECT

 public:
  static constexpr int detailsRole = Qt::UserRole;

  using QStyledItemDelegate::QStyledItemDelegate;

  void paint(QPainter *painter, const QStyleOptionViewItem &option, const QModelIndex &index) const override;
  QSize sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const override;
};

}  // namespace tavril
