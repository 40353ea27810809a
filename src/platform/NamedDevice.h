#pragma once

#include <QString>

namespace tavril {

/// Something with a name. The decoder needs no more of the port that the user has chosen.
class NamedDevice {
 public:
  virtual ~NamedDevice() = default;

  virtual QString name() const = 0;
};

}  // namespace tavril
