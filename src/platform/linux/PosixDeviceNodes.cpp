#include "platform/linux/PosixDeviceNodes.h"

#include <QByteArray>
#include <QFile>
#include <QFileInfo>
#include <QtEndian>

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

namespace {

/// The kernel's form of an access list, little endian: a version, then tag, rights and number for each entry.
constexpr std::uint32_t version = 2;
constexpr qsizetype headSize = 4;
constexpr qsizetype entrySize = 8;
enum Tag : std::uint16_t { User = 0x02, OwningGroup = 0x04, Group = 0x08, Mask = 0x10 };
constexpr std::uint32_t readAndWrite = 06;

struct Entry {
  std::uint16_t tag;
  std::uint16_t rights;
  std::uint32_t id;
};

std::vector<Entry> entriesOf(const QByteArray &list) {
  std::vector<Entry> entries;
  if (list.size() < headSize || (list.size() - headSize) % entrySize != 0 ||
      qFromLittleEndian<std::uint32_t>(list.constData()) != version) {
    return entries;
  }
  for (qsizetype at = headSize; at < list.size(); at += entrySize) {
    const char *entry = list.constData() + at;
    entries.push_back({qFromLittleEndian<std::uint16_t>(entry), qFromLittleEndian<std::uint16_t>(entry + 2),
                       qFromLittleEndian<std::uint32_t>(entry + 4)});
  }
  return entries;
}

bool suffices(std::uint32_t rights) {
  return (rights & readAndWrite) == readAndWrite;
}

}  // namespace

NodeRights NodeRights::of(std::uint32_t mode, std::uint32_t group, const QByteArray &accessList,
                          std::uint32_t user, const std::set<std::uint32_t> &mine) {
  const std::vector<Entry> entries = entriesOf(accessList);
  std::uint32_t mask = readAndWrite;
  for (const Entry &entry : entries) {
    if (entry.tag == Mask) mask = entry.rights;
  }
  NodeRights rights;
  const auto offer = [&](std::uint32_t candidate) {
    // Nobody is to be told to join the superuser's group.
    if (candidate != 0 && (!rights.group || mine.contains(candidate))) rights.group = candidate;
  };
  // With an access list the mode shows the mask where the group's rights would stand.
  if (entries.empty() && suffices(mode >> 3)) offer(group);
  for (const Entry &entry : entries) {
    if (!suffices(entry.rights & mask)) continue;
    if (entry.tag == OwningGroup) offer(group);
    if (entry.tag == Group) offer(entry.id);
    if (entry.tag == User && entry.id == user) rights.userIsNamed = true;
  }
  return rights;
}

}  // namespace tavril
