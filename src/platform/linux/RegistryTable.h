#pragma once

#include "platform/DeviceRegistry.h"

#include <QHash>
#include <QString>

#include <cstddef>
#include <deque>
#include <map>
#include <memory>
#include <mutex>
#include <optional>
#include <vector>

namespace tavril {

/// A device's properties by their key.
using DeviceProperties = QHash<QString, QString>;

/// The counted handles of a registry: devices, walks over devices and the watches that refill walks, in one
/// number space. It knows nothing of where devices come from. Thread-safe, but announce() calls its callbacks
/// on the caller's thread.
class RegistryTable {
 public:
  /// A walk over these devices, owned by the caller.
  RegistryHandle addWalk(const std::vector<DeviceProperties> &devices);
  /// A walk that announce() refills with the devices of this kind of event; owned by the caller.
  RegistryHandle addWatch(DeviceEvent event, const std::vector<DeviceProperties> &devices,
                          DeviceRegistry::Callback callback, DeviceRegistry::Context *context);

  /// The walk's next device, owned by the caller; 0 at its end, which arms a watch, and for what is no walk.
  /// A walk that announce() refilled ends after each run of devices that it called the watch for.
  RegistryHandle next(RegistryHandle walk);
  /// Null for a property that the device does not have, and for what is no device.
  QString property(RegistryHandle device, const QString &key) const;

  /// Adds the device to every watch of this event, in the order of their making, and calls the watch unless
  /// it has been called for this run of devices and has not walked to the run's end yet. An event of another
  /// kind ends the run. So who answers the calls of several watches in their order, however late, meets the
  /// devices in the order in which they came and went.
  void announce(DeviceEvent event, const DeviceProperties &device);

  void retain(RegistryHandle handle);
  /// The last release makes the handle void. A void handle, and 0, may be released without effect.
  void release(RegistryHandle handle);
  bool contains(RegistryHandle handle) const;
  /// How many handles are alive: 0 when nobody leaked one.
  std::size_t size() const;

 private:
  struct Watch {
    DeviceEvent event;
    DeviceRegistry::Callback callback;
    DeviceRegistry::Context *context;
    bool armed = false;     // once its first walk has been walked to the end
    bool runEnded = false;  // by an event of another kind
  };
  using Run = std::deque<DeviceProperties>;
  struct Walk {
    std::deque<Run> runs;
    std::optional<Watch> watch;
  };
  struct Entry {
    std::size_t owners = 1;
    DeviceProperties device = {};
    std::unique_ptr<Walk> walk = nullptr;  // none: the entry is a device
  };

  RegistryHandle insert(Entry entry);
  static bool add(Walk &walk, DeviceEvent event, const DeviceProperties &device);

  mutable std::mutex mutex_;
  std::map<RegistryHandle, Entry> entries_;
  RegistryHandle lastHandle_ = 0;
};

}  // namespace tavril
