#pragma once

#include <QPointF>
#include <QRectF>

namespace tavril {

/// The one place that turns the screen design's coordinates (origin at the lower left, y upwards, in points)
/// into Qt's (origin at the upper left, y downwards) and back. Both are relative to the main screen.
class ScreenCoordinates {
 public:
  static constexpr int width = 1024;
  static constexpr int height = 768;

  static QPointF pointFromQt(QPointF point);
  static QPointF pointToQt(QPointF point);

  /// A frame is given by its lower left corner and its size.
  static QRectF frameToQt(double x, double y, double frameWidth, double frameHeight);
  /// The frame of a widget: x() and y() are its lower left corner.
  static QRectF frameFromQt(const QRectF &geometry);
};

}  // namespace tavril
