#pragma once

#include "doctor/Result.h"
#include "platform/DeviceNodes.h"
#include "platform/Processes.h"
#include "platform/UsbBus.h"

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril::doctor {

/// Which port the examination is about, and what the bus has to say of it.
struct ExaminedPort {
  QString path;                      ///< empty when there is no port at all
  std::vector<UsbAdapter> adapters;  ///< all that are plugged in
  bool isChosen = false;             ///< the user named the port
  DeviceNode node = {};

  /// The adapter of this port; nothing for a port that is none of USB.
  const UsbAdapter *adapter() const;
  /// Adapters without a port.
  const UsbAdapter *withoutNode() const;
  /// A port that is there in the place of one that is not, and the first of the others otherwise.
  const UsbAdapter *otherPort() const;
  /// A port that was named, is there, and is none of USB.
  bool isOther() const { return isChosen && node.exists && !adapter(); }
};

/// The port of this name, or the first port on the bus without one.
ExaminedPort examinedPort(const QString &path, const UsbBus &bus, const DeviceNodes &nodes);

// The checks that need no port to be opened. Pure.
Result checkUsbAdapter(const ExaminedPort &port);
Result checkDriver(const ExaminedPort &port);
Result checkNode(const ExaminedPort &port);
Result checkPermission(const ExaminedPort &port);

/// What is known of the programs that have the port open.
struct Holders {
  std::vector<RunningProcess> all;
  int own = 0;           ///< the number of this program
  bool seesAll = false;  ///< those of other users too
};
Result checkHolder(const ExaminedPort &port, const Holders &holders);
/// `running`: those daemons that run, of those named below.
Result checkDaemons(const std::vector<RunningProcess> &running);
QStringList troublesomeDaemons();

/// The result of a check that cannot be made after what was found before.
Result notLookedAt(CheckId check);

}  // namespace tavril::doctor
