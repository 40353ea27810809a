#include "program/tavrilctl/CtlObjects.h"

#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/Options.h"
#include "serial/SerialPort.h"

#include <QFileInfo>

#include <optional>

namespace tavril::cli {

namespace {

bool isThere(const QString &path) {
  return QFileInfo::exists(path);
}

}  // namespace

QString CtlObjects::startVirtualServo() {
  QString error;
  if (!virtualServo.start(&error)) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("the virtual servo could not be started: %1. Close other programs and retry.")
            .arg(error)};
  }
  return virtualServo.path();
}

QString CtlObjects::portToUse(const Options &options) {
  QString path;
  if (options.demo) {
    path = startVirtualServo();
  } else {
    path = choosePort(listedPorts(), options.port, isThere);
  }
  const RegistryHandle device = SerialPort::deviceFromBSDPath(serial.environment, path);
  if (device != 0) {
    devices.release(device);
  } else if (const auto problem = devices.addTerminal(path)) {
    throw Failure{ExitCode::NoPort,
                  *problem + QStringLiteral(". Name a serial terminal, such as /dev/ttyUSB0.")};
  }
  return path;
}

std::shared_ptr<SerialPort> CtlObjects::portAt(const QString &path) {
  // Links are followed where the terminal is named, so it may stand in the registry under its own name.
  if (auto port = SerialPort::serialPortWithPath(serial.environment, path)) return port;
  for (const PortInfo &info : listedPorts()) {
    // Terminals that were named come first.
    if (auto port = SerialPort::serialPortWithPath(serial.environment, info.path)) return port;
  }
  throw Failure{
      ExitCode::NoPort,
      QStringLiteral("there is no serial terminal at %1. \"tavrilctl ports\" lists those there are.")
          .arg(shown(path))};
}

QString CtlObjects::portToExamine(const Options &options) {
  if (options.demo) return startVirtualServo();
  return options.port.isEmpty() ? QString() : choosePort(listedPorts(), options.port, isThere);
}

}  // namespace tavril::cli
