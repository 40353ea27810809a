#include "editor/ExactTextStyle.h"

#include <QFont>
#include <QFontInfo>
#include <QPaintDevice>
#include <QPainter>
#include <QPointF>
#include <QRectF>
#include <QSizeF>

#include <cmath>

namespace tavril {

namespace {

/// The size that the font asks for, relative to the one that it is drawn in.
double scaleOf(const QPainter &painter) {
  const QFont &font = painter.font();
  if (font.pointSizeF() <= 0) return 1;  // given in pixels, which are whole
  const double wanted = font.pointSizeF() * painter.device()->logicalDpiY() / 72;
  return wanted / QFontInfo(font).pixelSize();
}

}  // namespace

void ExactTextStyle::drawItemText(QPainter *painter, const QRect &place, int flags, const QPalette &palette,
                                  bool enabled, const QString &text, QPalette::ColorRole role) const {
  const double scale = scaleOf(*painter);
  if (std::abs(scale - 1) < 0.001) {
    QProxyStyle::drawItemText(painter, place, flags, palette, enabled, text, role);
    return;
  }
  painter->save();
  if (role != QPalette::NoRole) painter->setPen(palette.color(role));
  painter->translate(place.topLeft());
  painter->scale(scale, scale);
  painter->drawText(QRectF(QPointF(), QSizeF(place.size()) / scale), flags, text);
  painter->restore();
}

}  // namespace tavril
