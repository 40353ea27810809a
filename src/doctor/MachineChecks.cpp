#include "doctor/MachineChecks.h"

#include "doctor/ShellWord.h"

#include <algorithm>
#include <iterator>

namespace tavril::doctor {

namespace {

const UsbAdapter *found(const std::vector<UsbAdapter> &adapters, auto rule) {
  const auto at = std::ranges::find_if(adapters, rule);
  return at == adapters.end() ? nullptr : &*at;
}

QString labels(const std::vector<RunningProcess> &processes) {
  QStringList all;
  for (const RunningProcess &process : processes) all.append(process.label());
  return all.join(QStringLiteral(", "));
}

constexpr char16_t modemDaemon[] = u"ModemManager";
constexpr char16_t brailleDaemon[] = u"brltty";

}  // namespace

const UsbAdapter *ExaminedPort::adapter() const {
  return found(adapters, [this](const UsbAdapter &adapter) {
    return !path.isEmpty() && (adapter.node == path || adapter.node == node.path);
  });
}

const UsbAdapter *ExaminedPort::withoutNode() const {
  return found(adapters, [](const UsbAdapter &adapter) { return adapter.node.isEmpty(); });
}

const UsbAdapter *ExaminedPort::otherPort() const {
  return found(adapters, [this](const UsbAdapter &adapter) {
    return !adapter.node.isEmpty() && adapter.node != path && adapter.node != node.path;
  });
}

ExaminedPort examinedPort(const QString &path, const UsbBus &bus, const DeviceNodes &nodes) {
  ExaminedPort port{path, bus.serialAdapters(), !path.isEmpty()};
  if (!port.isChosen) {
    if (const UsbAdapter *first = port.otherPort()) port.path = first->node;
  }
  if (!port.path.isEmpty()) port.node = nodes.look(port.path);
  return port;
}

Result checkUsbAdapter(const ExaminedPort &port) {
  const CheckId check = CheckId::UsbAdapter;
  if (port.isOther()) return {check, State::Skipped, QStringLiteral("doctor_not_usb"), {port.path}};
  const UsbAdapter *adapter = port.adapter();
  if (!adapter) adapter = port.withoutNode();
  if (!adapter) adapter = port.otherPort();
  if (adapter) return {check, State::Passed, QStringLiteral("doctor_usb_found"), {adapter->label()}};
  return {check,
          State::Failed,
          QStringLiteral("doctor_usb_none"),
          {},
          QStringLiteral("doctor_advice_plug_in"),
          QStringLiteral("lsusb")};
}

Result checkDriver(const ExaminedPort &port) {
  const CheckId check = CheckId::Driver;
  if (port.isOther()) return {check, State::Skipped, QStringLiteral("doctor_not_usb"), {port.path}};
  if (const UsbAdapter *adapter = port.adapter())
    return {check, State::Passed, QStringLiteral("doctor_driver_bound"), {adapter->driver}};
  if (const UsbAdapter *bare = port.withoutNode()) {
    if (bare->driver == u"usbfs") {
      return {check,
              State::Failed,
              QStringLiteral("doctor_driver_taken"),
              {bare->label()},
              QStringLiteral("doctor_advice_braille"),
              QStringLiteral("sudo systemctl mask --now brltty-udev.service brltty.service")};
    }
    if (bare->driver.isEmpty()) {
      return {check,
              State::Failed,
              QStringLiteral("doctor_driver_none"),
              {bare->label()},
              QStringLiteral("doctor_advice_driver"),
              QStringLiteral("sudo modprobe ") + shellWord(bare->usualDriver)};
    }
    return {check, State::Passed, QStringLiteral("doctor_driver_bound"), {bare->driver}};
  }
  if (const UsbAdapter *other = port.otherPort())
    return {check, State::Passed, QStringLiteral("doctor_driver_bound"), {other->driver}};
  return notLookedAt(check);
}

Result checkNode(const ExaminedPort &port) {
  const CheckId check = CheckId::Node;
  const UsbAdapter *other = port.otherPort();
  if (port.path.isEmpty()) {
    if (!port.withoutNode()) return notLookedAt(check);
    return {check,
            State::Failed,
            QStringLiteral("doctor_node_missing"),
            {},
            QStringLiteral("doctor_advice_replug")};
  }
  if (!port.node.exists) {
    if (other) {
      return {check,
              State::Failed,
              QStringLiteral("doctor_node_moved"),
              {port.path, other->node, other->label()},
              QStringLiteral("doctor_advice_moved"),
              QStringLiteral("tavrilctl doctor --port ") +
                  shellWord(other->lastingName.isEmpty() ? other->node : other->lastingName)};
    }
    return {check,
            State::Failed,
            QStringLiteral("doctor_node_none"),
            {port.path},
            QStringLiteral("doctor_advice_replug")};
  }
  if (!port.node.isCharacterDevice) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_node_no_terminal"),
            {port.path},
            QStringLiteral("doctor_advice_choose_port"),
            QStringLiteral("tavrilctl ports")};
  }
  if (!port.isChosen && other) {
    return {check,
            State::Warning,
            QStringLiteral("doctor_node_several"),
            {port.path, other->node, other->label()},
            QStringLiteral("doctor_advice_moved"),
            QStringLiteral("tavrilctl doctor --port ") + shellWord(other->node)};
  }
  const UsbAdapter *adapter = port.adapter();
  if (adapter && !adapter->lastingName.isEmpty())
    return {check, State::Passed, QStringLiteral("doctor_node_lasting"), {port.path, adapter->lastingName}};
  return {check, State::Passed, QStringLiteral("doctor_node_found"), {port.path}};
}

Result checkPermission(const ExaminedPort &port) {
  const CheckId check = CheckId::Permission;
  const DeviceNode &node = port.node;
  if (!node.exists || !node.isCharacterDevice) return notLookedAt(check);
  if (node.mayUse) {
    if (node.byAccessList)
      return {check, State::Passed, QStringLiteral("doctor_permission_list"), {node.path, node.user}};
    if (node.inGroup)
      return {check, State::Passed, QStringLiteral("doctor_permission_group"), {node.path, node.group}};
    return {check, State::Passed, QStringLiteral("doctor_permission"), {node.path}};
  }
  if (node.group.isEmpty() || node.inGroup) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_permission_denied"),
            {node.path, node.owner},
            QStringLiteral("doctor_advice_access_list"),
            QStringLiteral("sudo setfacl -m u:%1:rw %2").arg(shellWord(node.user), shellWord(node.path))};
  }
  if (node.isMember) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_permission_later"),
            {node.path, node.group},
            QStringLiteral("doctor_advice_log_in"),
            QStringLiteral("newgrp ") + shellWord(node.group)};
  }
  return {check,
          State::Failed,
          QStringLiteral("doctor_permission_no_member"),
          {node.path, node.group},
          QStringLiteral("doctor_advice_join"),
          QStringLiteral("sudo usermod -aG %1 %2").arg(shellWord(node.group), shellWord(node.user))};
}

Result checkHolder(const ExaminedPort &port, const Holders &holders) {
  const CheckId check = CheckId::Holder;
  if (!port.node.exists) return notLookedAt(check);
  std::vector<RunningProcess> others;
  std::ranges::copy_if(holders.all, std::back_inserter(others),
                       [&](const RunningProcess &process) { return process.id != holders.own; });
  if (!others.empty()) {
    QStringList ids;
    for (const RunningProcess &process : others) ids.append(QString::number(process.id));
    return {check,
            State::Failed,
            QStringLiteral("doctor_holder"),
            {port.node.path, labels(others)},
            QStringLiteral("doctor_advice_end_program"),
            QStringLiteral("kill ") + ids.join(u' ')};
  }
  if (others.size() != holders.all.size())
    return {check, State::Passed, QStringLiteral("doctor_holder_own"), {port.node.path}};
  if (holders.seesAll) return {check, State::Passed, QStringLiteral("doctor_holder_none"), {port.node.path}};
  return {check,
          State::Passed,
          QStringLiteral("doctor_holder_unseen"),
          {port.node.path},
          {},
          QStringLiteral("sudo fuser -v ") + shellWord(port.node.path)};
}

QStringList troublesomeDaemons() {
  return {QString::fromUtf16(modemDaemon), QString::fromUtf16(brailleDaemon)};
}

Result checkDaemons(const std::vector<RunningProcess> &running) {
  const CheckId check = CheckId::Daemons;
  const bool braille = std::ranges::any_of(
      running, [](const RunningProcess &process) { return process.name == brailleDaemon; });
  if (braille) {
    return {check,
            State::Warning,
            QStringLiteral("doctor_daemon_braille"),
            {labels(running)},
            QStringLiteral("doctor_advice_braille"),
            QStringLiteral("sudo systemctl mask --now brltty-udev.service brltty.service")};
  }
  if (!running.empty()) {
    return {check,
            State::Warning,
            QStringLiteral("doctor_daemon_modem"),
            {labels(running)},
            QStringLiteral("doctor_advice_modem"),
            QStringLiteral("sudo systemctl stop ModemManager.service")};
  }
  return {check, State::Passed, QStringLiteral("doctor_daemon_none"), {}};
}

Result notLookedAt(CheckId check) {
  return {check, State::Skipped, QStringLiteral("doctor_not_looked_at"), {}};
}

}  // namespace tavril::doctor
