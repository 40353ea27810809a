#pragma once

#include <QList>
#include <QPoint>
#include <QRect>
#include <QSize>
#include <QString>
#include <QStringView>
#include <QWidget>

#include <optional>

namespace tavril {

class Preferences;

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

/// Has a window come up where and as large as it was when the program ended last.
class WindowMemory {
 public:
  /// What it is kept under.
  static constexpr char16_t key[] = u"windowPlace";

  /// `placesWindows`: whether programs may choose the places of their windows, which under Wayland they may
  /// not; only the size is kept then.
  WindowMemory(QWidget &window, Preferences &preferences, bool placesWindows);
  /// The same, as the platform says that the program runs on.
  WindowMemory(QWidget &window, Preferences &preferences);

  /// To be called before the window is shown. False, and nothing done, when nothing fit to use was kept.
  bool restore() const;
  /// To be called while the window is still there, shown or not.
  void keep() const;

 private:
  QWidget &window_;
  Preferences &preferences_;
  const bool placesWindows_;
};

}  // namespace tavril
