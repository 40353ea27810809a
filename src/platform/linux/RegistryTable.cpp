#include "platform/linux/RegistryTable.h"

#include <utility>

namespace tavril {

RegistryHandle RegistryTable::insert(Entry entry) {
  // A number is not used again soon, so that a handle kept too long names nothing rather than another device.
  do {
    ++lastHandle_;
  } while (lastHandle_ == 0 || entries_.contains(lastHandle_));
  entries_.emplace(lastHandle_, std::move(entry));
  return lastHandle_;
}

RegistryHandle RegistryTable::addWalk(const std::vector<DeviceProperties> &devices) {
  auto walk = std::make_unique<Walk>();
  walk->runs.emplace_back(devices.begin(), devices.end());
  const std::lock_guard lock(mutex_);
  return insert({.walk = std::move(walk)});
}

RegistryHandle RegistryTable::addWatch(DeviceEvent event, const std::vector<DeviceProperties> &devices,
                                       DeviceRegistry::Callback callback, DeviceRegistry::Context *context) {
  auto walk = std::make_unique<Walk>();
  walk->runs.emplace_back(devices.begin(), devices.end());
  walk->watch = Watch{.event = event, .callback = std::move(callback), .context = context};
  const std::lock_guard lock(mutex_);
  return insert({.walk = std::move(walk)});
}

RegistryHandle RegistryTable::next(RegistryHandle walk) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(walk);
  if (found == entries_.end() || !found->second.walk) return 0;
  Walk &steps = *found->second.walk;
  if (steps.runs.empty()) return 0;
  Run &run = steps.runs.front();
  if (run.empty()) {
    steps.runs.pop_front();
    if (steps.watch) steps.watch->armed = true;
    return 0;
  }
  DeviceProperties device = std::move(run.front());
  run.pop_front();
  return insert({.device = std::move(device)});
}

QString RegistryTable::property(RegistryHandle device, const QString &key) const {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(device);
  return found == entries_.end() ? QString() : found->second.device.value(key);
}

/// True when the watch is to be called. Expects the lock.
bool RegistryTable::add(Walk &walk, DeviceEvent event, const DeviceProperties &device) {
  Watch &watch = *walk.watch;
  if (watch.event != event) {
    watch.runEnded = true;
    return false;
  }
  const bool beginsRun = walk.runs.empty() || (watch.armed && watch.runEnded);
  if (beginsRun) walk.runs.emplace_back();
  walk.runs.back().push_back(device);
  watch.runEnded = false;
  return beginsRun;
}

void RegistryTable::announce(DeviceEvent event, const DeviceProperties &device) {
  std::vector<RegistryHandle> due;
  {
    const std::lock_guard lock(mutex_);
    for (auto &[handle, entry] : entries_) {
      if (!entry.walk || !entry.walk->watch) continue;
      if (add(*entry.walk, event, device)) due.push_back(handle);
    }
  }
  for (const RegistryHandle handle : due) {
    DeviceRegistry::Callback callback;
    DeviceRegistry::Context *context = nullptr;
    {
      // Looked up anew each time: a callback called before this one may have released the walk.
      const std::lock_guard lock(mutex_);
      const auto found = entries_.find(handle);
      if (found == entries_.end()) continue;
      callback = found->second.walk->watch->callback;
      context = found->second.walk->watch->context;
    }
    if (callback) callback(context, handle);
  }
}

void RegistryTable::retain(RegistryHandle handle) {
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(handle);
  if (found != entries_.end()) ++found->second.owners;
}

void RegistryTable::release(RegistryHandle handle) {
  // Destroyed outside the lock: what a callback captured may itself release handles.
  decltype(entries_)::node_type gone;
  const std::lock_guard lock(mutex_);
  const auto found = entries_.find(handle);
  if (found != entries_.end() && --found->second.owners == 0) gone = entries_.extract(found);
}

bool RegistryTable::contains(RegistryHandle handle) const {
  const std::lock_guard lock(mutex_);
  return entries_.contains(handle);
}

std::size_t RegistryTable::size() const {
  const std::lock_guard lock(mutex_);
  return entries_.size();
}

}  // namespace tavril
