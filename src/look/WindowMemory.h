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

/// The position and size of a window, in the desktop's points. Its text is stored between runs:
/// "1024x790+36+24", without the position if the desktop chooses it, and followed by " maximized" if the
/// window fills the screen.
struct WindowPlace {
  QSize size;
  std::optional<QPoint> position;  ///< the upper left corner of the frame
  bool isMaximized = false;

  QString text() const;
  /// No value if the text is not of this form, or if no window can have this place.
  static std::optional<WindowPlace> fromText(QStringView text);

  /// The same place moved and reduced to fit into one screen: the one that it overlaps most, else the first.
  /// `screens`: the usable areas, the main screen first. Without a screen, nothing changes.
  WindowPlace within(const QList<QRect> &screens) const;

  bool operator==(const WindowPlace &) const = default;
};

/// Reopens a window with its last position and size.
class WindowMemory {
 public:
  /// The key of the window in the preferences.
  static constexpr char16_t key[] = u"windowPlace";

  /// `placesWindows`: whether programs may choose the positions of their windows. Under Wayland they may not;
  /// then only the size is stored.
  WindowMemory(QWidget &window, Preferences &preferences, bool placesWindows);
  /// The same, with `placesWindows` as it is on the current platform.
  WindowMemory(QWidget &window, Preferences &preferences);

  /// Called before the window is shown. Returns false and does nothing if there is no usable stored place.
  bool restore() const;
  /// Called while the window still exists, shown or not.
  void keep() const;

 private:
  QWidget &window_;
  Preferences &preferences_;
  const bool placesWindows_;
};

}  // namespace tavril
