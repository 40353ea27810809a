#include "editor/screen/ScreenCoordinates.h"

namespace tavril {

QPointF ScreenCoordinates::pointFromQt(QPointF point) {
  return {point.x(), height - point.y()};
}

QPointF ScreenCoordinates::pointToQt(QPointF point) {
  return {point.x(), height - point.y()};
}

QRectF ScreenCoordinates::frameToQt(double x, double y, double frameWidth, double frameHeight) {
  return {x, height - y - frameHeight, frameWidth, frameHeight};
}

QRectF ScreenCoordinates::frameFromQt(const QRectF &geometry) {
  return {geometry.x(), height - geometry.y() - geometry.height(), geometry.width(), geometry.height()};
}

}  // namespace tavril
