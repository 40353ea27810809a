#pragma once

#include <QString>

struct _UMockdevTestbed;

namespace tavril {

/// A machine whose devices are the test's, as the kernel and udev show them: /sys, /dev and udev's events.
/// Only in programs started through umockdev-wrapper; one at a time.
class MockMachine {
 public:
  MockMachine();
  ~MockMachine();
  MockMachine(const MockMachine &) = delete;
  MockMachine &operator=(const MockMachine &) = delete;

  /// An FTDI adapter in the USB socket ("1-1"). Until udev is done with it, it is not initialised.
  void plugFtdi(const QString &name, const QString &socket = QStringLiteral("1-1"), bool isInitialised = true,
                const QString &serialNumber = QStringLiteral("A50285BI"));
  /// A CDC-ACM adapter that tells no serial number and has no model name but the one in udev's database.
  void plugAcm(const QString &name, const QString &socket);
  /// A USB device of this maker that has no terminal; without a driver where the text is empty.
  void plugWithoutPort(const QString &socket, const QString &vendorId, const QString &driver,
                       const QString &interfaceClass = QStringLiteral("ff"),
                       const QString &product = QStringLiteral("USB Serial"));
  /// A port of the machine's own, found by plug and play.
  void addBuiltIn(const QString &name);
  /// The same as newer kernels show it, with two devices of the serial core in between.
  void addBuiltInBelowSerialCore(const QString &name);
  /// A port at one of the addresses of old; `type` is 0 when nothing answered there.
  void addLegacy(const QString &name, int type);
  /// A terminal without hardware: a virtual console, a pseudo-terminal of the old kind.
  void addVirtual(const QString &name);
  void removeVirtual(const QString &name);
  /// A terminal that hangs under a device, though under one without hardware.
  void addBelowVirtual(const QString &name);
  /// A character device that is no terminal, in the place of the real /dev/null.
  void addNull();

  /// Pulls the adapter in this socket: when the event is read, its devices are gone.
  void unplug(const QString &name, const QString &socket);
  /// Another event for the adapter in this socket.
  void sendEvent(const QString &name, const QString &socket, const char *action);
  /// Gives a node of this machine a second name below /dev.
  void link(const QString &name, const QString &target);

 private:
  void add(const QString &description);
  /// Where the node stands in the real file system, never a real node.
  QString nodePath(const QString &name) const;

  _UMockdevTestbed *testbed_;
  bool hasLegacyDriver_ = false;
};

}  // namespace tavril
