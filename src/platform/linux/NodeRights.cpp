#include "platform/linux/NodeRights.h"

#include <QtEndian>

#include <vector>

namespace tavril {

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
