#pragma once

namespace tavril {

/// Opens the link to the servo. Main thread only.
class LinkOpener {
 public:
  virtual ~LinkOpener() = default;

  /// Closes the port in use, takes the first listed port and opens it at 115200 baud.
  virtual void serialFormat() = 0;
};

}  // namespace tavril
