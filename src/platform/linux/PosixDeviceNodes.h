#pragma once

#include "platform/DeviceNodes.h"

#include <QByteArray>
#include <QString>

#include <cstdint>
#include <optional>
#include <set>

namespace tavril {

/// Who may read and write a node, from its mode and its access list. Pure.
struct NodeRights {
  std::optional<std::uint32_t> group;  ///< one that may, and is not the superuser's
  bool userIsNamed = false;            ///< the access list names the user and lets him

  /// `accessList` as the kernel hands it out, empty when there is none; what cannot be understood counts as
  /// none. Of several groups that may, one of `mine` is preferred.
  static NodeRights of(std::uint32_t mode, std::uint32_t group, const QByteArray &accessList,
                       std::uint32_t user, const std::set<std::uint32_t> &mine);
};

/// The nodes of this machine, with the user database for the names.
class PosixDeviceNodes final : public DeviceNodes {
 public:
  DeviceNode look(const QString &path) const override;
};

}  // namespace tavril
