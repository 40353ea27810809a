#pragma once

#include <QWidget>

namespace tavril {

class Preferences;

/// Has a window come up where and as large as it was when the program ended last. Main thread only; owns
/// neither.
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
