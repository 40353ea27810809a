#pragma once

#include <QString>
#include <QStringList>

namespace tavril {

class DeviceNodes;
class Processes;
class SerialPort;
class StringTable;
struct SerialEnvironment;

/// What can be found out about a listed port without opening it: its device, and whether it can be opened.
struct PortStatus {
  enum class State { Ready, Open, Gone, Denied, InUse };

  State state = State::Ready;
  QString name;
  QString path;
  QString product;       ///< empty when it is not known
  QString serialNumber;  ///< likewise
  QString holder;        ///< who uses it, "minicom (1234)"

  static PortStatus of(const SerialPort &port, const SerialEnvironment &serial, const DeviceNodes &nodes,
                       const Processes &processes);
  /// "can be opened"
  QString stateText(const StringTable &strings) const;
  /// Everything but the name, separated by dots.
  QString details(const StringTable &strings) const;
};

}  // namespace tavril
