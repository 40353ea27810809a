#include "serial/config/PortDelegate.h"

#include <QApplication>
#include <QPainter>
#include <QPalette>
#include <QRect>
#include <QString>
#include <QStyle>
#include <QWidget>

#include <algorithm>

namespace tavril {

namespace {

constexpr int margin = 8;
constexpr int gap = 2;

}  // namespace

void PortDelegate::paint(QPainter *painter, const QStyleOptionViewItem &option,
                         const QModelIndex &index) const {
  QStyleOptionViewItem item(option);
  initStyleOption(&item, index);
  item.text.clear();
  const QWidget *widget = option.widget;
  (widget ? widget->style() : QApplication::style())
      ->drawControl(QStyle::CE_ItemViewItem, &item, painter, widget);
  const bool isSelected = (option.state & QStyle::State_Selected) != 0;
  const int height = option.fontMetrics.height();
  const QRect line = option.rect.adjusted(margin, 0, -margin, 0);
  painter->save();
  painter->setFont(option.font);
  painter->setPen(option.palette.color(isSelected ? QPalette::HighlightedText : QPalette::Text));
  painter->drawText(QRect(line.left(), line.top() + margin, line.width(), height),
                    Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine,
                    index.data(Qt::DisplayRole).toString());
  if (!isSelected) painter->setPen(option.palette.color(QPalette::PlaceholderText));
  const QString details =
      option.fontMetrics.elidedText(index.data(detailsRole).toString(), Qt::ElideMiddle, line.width());
  painter->drawText(QRect(line.left(), line.top() + margin + height + gap, line.width(), height),
                    Qt::AlignLeft | Qt::AlignVCenter | Qt::TextSingleLine, details);
  painter->restore();
}

QSize PortDelegate::sizeHint(const QStyleOptionViewItem &option, const QModelIndex &index) const {
  const int width = std::max(option.fontMetrics.horizontalAdvance(index.data(Qt::DisplayRole).toString()),
                             option.fontMetrics.horizontalAdvance(index.data(detailsRole).toString()));
  return {width + 2 * margin, 2 * option.fontMetrics.height() + gap + 2 * margin};
}

}  // namespace tavril
