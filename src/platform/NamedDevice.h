#pragma once

#include <QString>

namespace tavril {

/// Something with a name to show: what the decoder needs to know of the port that the user chose.
class NamedDevice {
 public:
  virtual ~NamedDevice() = default;

  virtual QString name() const = 0;
};

}  // namespace tavril
