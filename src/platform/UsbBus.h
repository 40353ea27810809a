#pragma once

#include <QString>

#include <vector>

namespace tavril {

/// A USB serial adapter that is plugged in, or one of its ports if it has several. Unknown texts are empty.
struct UsbAdapter {
  QString product;
  QString serialNumber;
  QString vendorId;  ///< four hexadecimal digits, as the product's
  QString productId;
  QString driver;       ///< what has taken it; "usbfs" is a program
  QString usualDriver;  ///< the kernel module that should
  QString node;         ///< "/dev/ttyUSB0"
  QString lastingName;  ///< a link to the node that stays the same, below /dev/serial/by-id

  /// "FT232R (0403:6001)"
  QString label() const {
    const QString ids = vendorId + u':' + productId;
    return product.isEmpty() ? ids : product + QStringLiteral(" (") + ids + u')';
  }
};

/// All adapters that are plugged in, whether or not they can be used. Any thread may call it.
class UsbBus {
 public:
  virtual ~UsbBus() = default;

  virtual std::vector<UsbAdapter> serialAdapters() const = 0;
};

}  // namespace tavril
