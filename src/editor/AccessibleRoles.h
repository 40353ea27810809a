#pragma once

namespace tavril {

/// What kind of thing a screen reader takes our own widgets for: a panel is a dialog, named by its title and
/// described by its text, and the picture of the servo is a picture.
class AccessibleRoles {
 public:
  /// Makes them known to Qt. To be called as often as one likes, main thread only.
  static void install();
};

}  // namespace tavril
