#pragma once

#include "platform/DeviceNodes.h"
#include "platform/Processes.h"
#include "platform/UsbBus.h"

#include <QHash>

#include <algorithm>

namespace tavril::doctor {

/// A machine that is as the test says. Its parts are handed out one by one.
struct FakeMachine {
  struct Bus final : UsbBus {
    std::vector<UsbAdapter> serialAdapters() const override { return adapters; }
    std::vector<UsbAdapter> adapters;
  };
  struct Nodes final : DeviceNodes {
    DeviceNode look(const QString &path) const override {
      DeviceNode node = nodes.value(path);
      if (node.path.isEmpty()) node.path = path;
      return node;
    }
    QHash<QString, DeviceNode> nodes;
  };
  struct Programs final : Processes {
    std::vector<RunningProcess> holding(const QString &path) const override {
      return path == held ? holders : std::vector<RunningProcess>();
    }
    std::vector<RunningProcess> named(const QStringList &names) const override {
      std::vector<RunningProcess> found;
      std::ranges::copy_if(running, std::back_inserter(found),
                           [&](const RunningProcess &program) { return names.contains(program.name); });
      return found;
    }
    bool seesAll() const override { return all; }
    int own() const override { return 4711; }

    QString held;
    std::vector<RunningProcess> holders;
    std::vector<RunningProcess> running;
    bool all = true;
  };

  /// A node that may be used.
  DeviceNode &node(const QString &path) {
    DeviceNode &made = nodes.nodes[path];
    made.exists = made.isCharacterDevice = made.mayUse = true;
    made.path = path;
    made.owner = QStringLiteral("root");
    made.user = QStringLiteral("anna");
    return made;
  }
  void plug(const QString &path) {
    UsbAdapter adapter;
    adapter.product = QStringLiteral("FT232R");
    adapter.vendorId = QStringLiteral("0403");
    adapter.productId = QStringLiteral("6001");
    adapter.driver = adapter.usualDriver = QStringLiteral("ftdi_sio");
    adapter.node = path;
    bus.adapters.push_back(adapter);
    node(path);
  }

  Bus bus;
  Nodes nodes;
  Programs programs;
};

}  // namespace tavril::doctor
