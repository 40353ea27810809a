#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringView>

#include <optional>

namespace tavril {

/// Where and how large a window is, in the desktop's points. The text is how it is kept between two runs:
/// "1024x790+36+24", without the place where that is the desktop's to choose, and with " maximized" behind it
/// when the window fills the screen.
struct WindowPlace {
  QSize size;
  std::optional<QPoint> position;  ///< the upper left corner of the frame
  bool isMaximized = false;

  QString text() const;
  /// Nothing if the text is not one of these, or if no window can have this place.
  static std::optional<WindowPlace> fromText(QStringView text);

  /// The same, but whole within one of the screens: the one that it has most in common with, else the first.
  /// `screens`: what windows may take up of each, the main one first. Without a screen nothing changes.
  WindowPlace within(const QList<QRect> &screens) const;

  bool operator==(const WindowPlace &) const = default;
};

}  // namespace tavril
