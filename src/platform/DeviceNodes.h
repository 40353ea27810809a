#pragma once

#include <QString>

namespace tavril {

/// What is at a path below /dev, and who may use it.
struct DeviceNode {
  bool exists = false;
  bool isCharacterDevice = false;
  bool mayUse = false;        ///< this program may read and write it
  bool byAccessList = false;  ///< the node's access list names the user
  QString path;               ///< with links followed
  QString owner;
  QString group;         ///< a group that may read and write it; empty when there is none but the superuser's
  bool inGroup = false;  ///< this program has that group
  bool isMember = false;  ///< the user is in that group, though this session may have begun before
  QString user;           ///< as whom this program runs
};

/// Any thread may call it. It opens nothing.
class DeviceNodes {
 public:
  virtual ~DeviceNodes() = default;

  virtual DeviceNode look(const QString &path) const = 0;
};

}  // namespace tavril
