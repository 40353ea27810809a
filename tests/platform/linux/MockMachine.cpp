#include "tests/platform/linux/MockMachine.h"

#include <QDir>
#include <QFile>

#include <gtest/gtest.h>
#include <umockdev.h>

namespace tavril {
namespace {

QString usbPlace(const QString &socket) {
  return QStringLiteral("/devices/pci0000:00/usb1/") + socket;
}

QString terminalPlace(const QString &name, const QString &socket) {
  const QString interface = usbPlace(socket) + u'/' + socket + QStringLiteral(":1.0");
  return interface + (name.startsWith(u"ttyUSB") ? u'/' + name : QString()) + QStringLiteral("/tty/") + name;
}

QString driverLink(const QString &bus, const QString &driver) {
  return QStringLiteral("L: driver=../../../../bus/%1/drivers/%2\n").arg(bus, driver);
}

/// A device that is not a terminal. `more` are further lines.
QString ancestor(const QString &place, const QString &subsystem, const QString &more = {}) {
  return QStringLiteral("P: %1\nE: SUBSYSTEM=%2\n%3\n").arg(place, subsystem, more);
}

QString terminal(const QString &place, const QString &more, bool isInitialised = true) {
  // The kernel's numbers do not matter here but have to differ.
  static int number = 0;
  ++number;
  return QStringLiteral(
             "P: %1\nN: %2=00\nE: SUBSYSTEM=tty\nE: DEVNAME=/dev/%2\nE: MAJOR=188\nE: MINOR=%3\nA: "
             "dev=188:%3\n%4%5\n")
      .arg(place, place.section(u'/', -1), QString::number(number),
           isInitialised ? QStringLiteral("E: USEC_INITIALIZED=5000\n") : QString(), more);
}

}  // namespace

MockMachine::MockMachine() : testbed_(umockdev_testbed_new()) {
  EXPECT_TRUE(umockdev_in_mock_environment()) << "to be run through umockdev-wrapper";
}

MockMachine::~MockMachine() {
  g_object_unref(testbed_);
}

void MockMachine::add(const QString &description) {
  GError *error = nullptr;
  EXPECT_TRUE(umockdev_testbed_add_from_string(testbed_, description.toUtf8().constData(), &error));
  if (error != nullptr) {
    ADD_FAILURE() << error->message << "\n" << description.toStdString();
    g_error_free(error);
  }
}

QString MockMachine::nodePath(const QString &name) const {
  gchar *root = umockdev_testbed_get_root_dir(testbed_);
  const QString path = QFile::decodeName(root) + QStringLiteral("/dev/") + name;
  g_free(root);
  return path;
}

void MockMachine::plugFtdi(const QString &name, const QString &socket, bool isInitialised,
                           const QString &serialNumber) {
  const QString usb = usbPlace(socket);
  const QString interface = usb + u'/' + socket + QStringLiteral(":1.0");
  add(ancestor(usb, QStringLiteral("usb"),
               QStringLiteral("E: DEVTYPE=usb_device\n") +
                   driverLink(QStringLiteral("usb"), QStringLiteral("usb"))) +
      ancestor(interface, QStringLiteral("usb"),
               QStringLiteral("E: DEVTYPE=usb_interface\n") +
                   driverLink(QStringLiteral("usb"), QStringLiteral("ftdi_sio"))) +
      ancestor(interface + u'/' + name, QStringLiteral("usb-serial"),
               driverLink(QStringLiteral("usb-serial"), QStringLiteral("ftdi_sio"))) +
      terminal(
          terminalPlace(name, socket),
          QStringLiteral("E: ID_BUS=usb\nE: ID_VENDOR_ID=0403\nE: ID_MODEL_ID=6001\n"
                         "E: ID_MODEL=FT232R_USB_UART\nE: ID_MODEL_FROM_DATABASE=FT232 Serial (UART) IC\n"
                         "E: ID_SERIAL_SHORT=%1\nE: DEVLINKS=/dev/serial/by-path/x "
                         "/dev/serial/by-id/usb-FTDI_%2\n")
              .arg(serialNumber, name),
          isInitialised));
}

void MockMachine::plugAcm(const QString &name, const QString &socket) {
  const QString usb = usbPlace(socket);
  add(ancestor(usb, QStringLiteral("usb"), QStringLiteral("E: DEVTYPE=usb_device\n")) +
      ancestor(usb + u'/' + socket + QStringLiteral(":1.0"), QStringLiteral("usb"),
               QStringLiteral("E: DEVTYPE=usb_interface\n") +
                   driverLink(QStringLiteral("usb"), QStringLiteral("cdc_acm"))) +
      terminal(terminalPlace(name, socket),
               QStringLiteral("E: ID_BUS=usb\nE: ID_VENDOR_ID=0525\nE: ID_MODEL_ID=a4a7\n"
                              "E: ID_MODEL_FROM_DATABASE=Linux-USB Serial Gadget\n")));
}

void MockMachine::plugWithoutPort(const QString &socket, const QString &vendorId, const QString &driver,
                                  const QString &interfaceClass, const QString &product) {
  const QString usb = usbPlace(socket);
  add(ancestor(usb, QStringLiteral("usb"),
               QStringLiteral("E: DEVTYPE=usb_device\nA: idVendor=%1\nA: idProduct=7523\nA: product=%2\n"
                              "A: serial=0001\n")
                   .arg(vendorId, product)) +
      ancestor(usb + u'/' + socket + QStringLiteral(":1.0"), QStringLiteral("usb"),
               QStringLiteral("E: DEVTYPE=usb_interface\nA: bInterfaceClass=%1\nA: bInterfaceSubClass=02\n")
                       .arg(interfaceClass) +
                   (driver.isEmpty() ? QString() : driverLink(QStringLiteral("usb"), driver))));
}

void MockMachine::addBuiltIn(const QString &name) {
  const QString place = QStringLiteral("/devices/pnp0/00:04");
  add(ancestor(place, QStringLiteral("pnp"), driverLink(QStringLiteral("pnp"), QStringLiteral("serial"))) +
      terminal(place + QStringLiteral("/tty/") + name, QStringLiteral("A: type=4\n")));
}

void MockMachine::addBuiltInBelowSerialCore(const QString &name) {
  const QString place = QStringLiteral("/devices/pnp0/00:05");
  const QString control = place + QStringLiteral("/00:05:0");
  const QString port = control + QStringLiteral("/00:05:0.0");
  add(ancestor(place, QStringLiteral("pnp"), driverLink(QStringLiteral("pnp"), QStringLiteral("serial"))) +
      ancestor(control, QStringLiteral("serial-base"),
               driverLink(QStringLiteral("serial-base"), QStringLiteral("ctrl"))) +
      ancestor(port, QStringLiteral("serial-base"),
               driverLink(QStringLiteral("serial-base"), QStringLiteral("port"))) +
      terminal(port + QStringLiteral("/tty/") + name, QStringLiteral("A: type=4\n")));
}

void MockMachine::addLegacy(const QString &name, int type) {
  const QString place = QStringLiteral("/devices/platform/serial8250");
  // Every port of this kind hangs under the one platform device.
  if (!hasLegacyDriver_) {
    add(ancestor(place, QStringLiteral("platform"),
                 driverLink(QStringLiteral("platform"), QStringLiteral("serial8250"))));
    hasLegacyDriver_ = true;
  }
  add(terminal(place + QStringLiteral("/tty/") + name, QStringLiteral("A: type=%1\n").arg(type)));
}

void MockMachine::addVirtual(const QString &name) {
  add(terminal(QStringLiteral("/devices/virtual/tty/") + name, QString()));
}

void MockMachine::addBelowVirtual(const QString &name) {
  const QString place = QStringLiteral("/devices/virtual/bluetooth/hci0");
  add(ancestor(place, QStringLiteral("bluetooth")) +
      terminal(place + QStringLiteral("/tty/") + name, QString()));
}

void MockMachine::removeVirtual(const QString &name) {
  const QByteArray place = (QStringLiteral("/sys/devices/virtual/tty/") + name).toUtf8();
  umockdev_testbed_uevent(testbed_, place.constData(), "remove");
  umockdev_testbed_remove_device(testbed_, place.constData());
}

void MockMachine::addNull() {
  add(
      QStringLiteral("P: /devices/virtual/mem/null\nN: null=00\nE: SUBSYSTEM=mem\nE: DEVNAME=/dev/null\n"
                     "E: MAJOR=1\nE: MINOR=3\nA: dev=1:3\n"));
}

void MockMachine::sendEvent(const QString &name, const QString &socket, const char *action) {
  const QByteArray place = (QStringLiteral("/sys") + terminalPlace(name, socket)).toUtf8();
  umockdev_testbed_uevent(testbed_, place.constData(), action);
}

void MockMachine::unplug(const QString &name, const QString &socket) {
  sendEvent(name, socket, "remove");
  // From the terminal upwards: with a device its entries under /sys/bus and /sys/class go, but not those of
  // the devices below it.
  const QString usb = QStringLiteral("/sys") + usbPlace(socket);
  for (QString place = QStringLiteral("/sys") + terminalPlace(name, socket); place.startsWith(usb);
       place = place.section(u'/', 0, -2)) {
    if (!place.endsWith(u"/tty")) umockdev_testbed_remove_device(testbed_, place.toUtf8().constData());
  }
  EXPECT_FALSE(QFile::exists(nodePath(name)));
}

void MockMachine::link(const QString &name, const QString &target) {
  const QString path = nodePath(name);
  EXPECT_TRUE(QDir().mkpath(path.section(u'/', 0, -2)));
  EXPECT_TRUE(QFile::link(target, path));
}

}  // namespace tavril
