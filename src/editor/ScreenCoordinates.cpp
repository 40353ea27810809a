#include "editor/ScreenCoordinates.h"

#include <QtMath>

namespace tavril {

QPointF ScreenCoordinates::pointFromQt(QPointF point) {
  return {point.x(), height - point.y()};
}

QPointF ScreenCoordinates::pointToQt(QPointF point) {
  return {point.x(), height - point.y()};
}

QRect ScreenCoordinates::frameToQt(double x, double y, double frameWidth, double frameHeight) {
  return {qRound(x), qRound(height - y - frameHeight), qRound(frameWidth), qRound(frameHeight)};
}

QRectF ScreenCoordinates::frameFromQt(const QRect &geometry) {
  return {static_cast<double>(geometry.x()), static_cast<double>(height - geometry.y() - geometry.height()),
          static_cast<double>(geometry.width()), static_cast<double>(geometry.height())};
}

}  // namespace tavril
