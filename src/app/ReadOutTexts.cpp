#include "app/ReadOutTexts.h"

#include "serial/PortError.h"
#include "serial/SerialPort.h"
#include "wire/Registers.h"

namespace tavril::readOutTexts {

QString noPort() {
  return QStringLiteral(
      "there is no serial port: plug in the servo's USB adapter, name a terminal with --port "
      "PATH, or try --demo.");
}

QString notOpened(const SerialPort &port, const Error *error) {
  return error ? openFailureText(*error)
               : QStringLiteral("%1 could not be opened: check that it is the servo adapter's port.")
                     .arg(port.path());
}

QString removed(const QString &portName) {
  return QStringLiteral(
             "the port %1 was removed while it was being read: check the cable, plug the adapter in "
             "again and retry.")
      .arg(portName);
}

QString noServo(const QString &portName) {
  return QStringLiteral(
             "no servo answered behind the bridge on %1: check the servo's cable and "
             "power, then retry.")
      .arg(portName);
}

QString severalServos(const QString &portName) {
  return QStringLiteral(
             "more than one servo answered on %1: connect just one servo to the bridge and "
             "retry.")
      .arg(portName);
}

QString silent(const QString &portName) {
  return QStringLiteral(
             "no answer from %1 within %2 s: check that it is the servo's adapter, that the bridge has "
             "power and that its cable is plugged in.")
      .arg(portName)
      .arg(countdownSeconds);
}

QString notDetected(const QString &portName) {
  return QStringLiteral(
             "%1 answered, but did not tell whether exactly one servo is there: check the servo's cable and "
             "power, then retry.")
      .arg(portName);
}

QString stopped(const QString &portName, int registersRead) {
  return QStringLiteral(
             "%1 stopped answering after %2 of %3 registers: check the servo's cable and power, then retry.")
      .arg(portName)
      .arg(registersRead)
      .arg(wire::registerCount);
}

}  // namespace tavril::readOutTexts
