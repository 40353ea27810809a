#include "platform/linux/PosixDeviceNodes.h"

#include "platform/linux/NodeRights.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>

#include <array>
#include <cstdint>
#include <set>
#include <vector>

#include <fcntl.h>
#include <grp.h>
#include <pwd.h>
#include <sys/stat.h>
#include <sys/xattr.h>
#include <unistd.h>

namespace tavril {

namespace {

constexpr std::size_t namesRoom = 16384;

/// The user with this number, or nothing. `room` holds what it points at.
const passwd *userOf(uid_t id, passwd &record, std::array<char, namesRoom> &room) {
  passwd *found = nullptr;
  ::getpwuid_r(id, &record, room.data(), room.size(), &found);
  return found;
}

QString userName(uid_t id) {
  passwd record{};
  std::array<char, namesRoom> room{};
  const passwd *user = userOf(id, record, room);
  return user ? QString::fromLocal8Bit(user->pw_name) : QString::number(id);
}

QString groupName(gid_t id) {
  group record{};
  group *found = nullptr;
  std::array<char, namesRoom> room{};
  ::getgrgid_r(id, &record, room.data(), room.size(), &found);
  return found ? QString::fromLocal8Bit(found->gr_name) : QString::number(id);
}

/// The groups that this program has.
std::set<std::uint32_t> ownGroups() {
  std::set<std::uint32_t> groups{::getegid()};
  const int count = ::getgroups(0, nullptr);
  if (count <= 0) return groups;
  std::vector<gid_t> list(static_cast<std::size_t>(count));
  const int got = ::getgroups(count, list.data());
  for (int i = 0; i < got; ++i) groups.insert(list[static_cast<std::size_t>(i)]);
  return groups;
}

/// The groups that the user would have if he logged in now.
std::set<std::uint32_t> groupsOfUser(uid_t id) {
  passwd record{};
  std::array<char, namesRoom> room{};
  const passwd *user = userOf(id, record, room);
  if (!user) return {};
  int count = 64;
  std::vector<gid_t> list(static_cast<std::size_t>(count));
  if (::getgrouplist(user->pw_name, user->pw_gid, list.data(), &count) < 0) {
    list.resize(static_cast<std::size_t>(count));
    if (::getgrouplist(user->pw_name, user->pw_gid, list.data(), &count) < 0) return {};
  }
  return {list.begin(), list.begin() + count};
}

QByteArray accessListOf(const QByteArray &path) {
  constexpr qsizetype longest = 4096;
  QByteArray list(longest, '\0');
  const ssize_t size = ::getxattr(path.constData(), "system.posix_acl_access", list.data(), longest);
  list.truncate(size < 0 ? 0 : size);
  return list;
}

}  // namespace

DeviceNode PosixDeviceNodes::look(const QString &path) const {
  DeviceNode node;
  node.path = QFileInfo(path).canonicalFilePath();
  const QByteArray file = QFile::encodeName(node.path);
  struct stat status {};
  if (node.path.isEmpty() || ::stat(file.constData(), &status) != 0) {
    node.path = path;
    return node;
  }
  const std::set<std::uint32_t> mine = ownGroups();
  const NodeRights rights =
      NodeRights::of(status.st_mode, status.st_gid, accessListOf(file), ::geteuid(), mine);
  node.exists = true;
  node.isCharacterDevice = S_ISCHR(status.st_mode);
  node.mayUse = ::faccessat(AT_FDCWD, file.constData(), R_OK | W_OK, AT_EACCESS) == 0;
  node.byAccessList = rights.userIsNamed;
  node.owner = userName(status.st_uid);
  node.user = userName(::geteuid());
  if (rights.group) {
    node.group = groupName(*rights.group);
    node.inGroup = mine.contains(*rights.group);
    node.isMember = groupsOfUser(::geteuid()).contains(*rights.group);
  }
  return node;
}

}  // namespace tavril
