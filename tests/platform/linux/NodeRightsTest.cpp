#include "platform/linux/PosixDeviceNodes.h"
#include "tests/support/Pty.h"

#include <QTemporaryDir>

#include <gtest/gtest.h>

#include <sys/stat.h>

namespace tavril {
namespace {

constexpr std::uint32_t dialout = 20;
constexpr std::uint32_t user = 1000;

/// An access list as the kernel hands it out: the owner may, the owning group with these rights, and one more
/// entry.
QByteArray accessList(char groupRights, char tag, char rights, const char *id, char mask) {
  return QByteArray("\x02\0\0\0", 4) + QByteArray("\x01\0\x06\0\xff\xff\xff\xff", 8) +
         QByteArray("\x04\0", 2) + groupRights + QByteArray("\0\xff\xff\xff\xff", 5) + tag + '\0' + rights +
         '\0' + QByteArray(id, 4) + QByteArray("\x10\0", 2) + mask + QByteArray("\0\xff\xff\xff\xff", 5) +
         QByteArray("\x20\0\0\0\xff\xff\xff\xff", 8);
}

TEST(NodeRights, WithoutAnAccessListAreThoseOfTheMode) {
  EXPECT_EQ(NodeRights::of(0660, dialout, {}, user, {}).group, dialout);
  EXPECT_EQ(NodeRights::of(0640, dialout, {}, user, {}).group, std::nullopt);
  EXPECT_EQ(NodeRights::of(0600, dialout, {}, user, {}).group, std::nullopt);
}

TEST(NodeRights, NeverPointAtTheSuperusersGroup) {
  EXPECT_EQ(NodeRights::of(0660, 0, {}, user, {}).group, std::nullopt);
}

TEST(NodeRights, AreThoseOfTheAccessListWhereThereIsOne) {
  const QByteArray named = accessList(06, 0x02, 06, "\xe8\x03\0\0", 06);
  EXPECT_TRUE(NodeRights::of(0660, dialout, named, user, {}).userIsNamed);
  EXPECT_FALSE(NodeRights::of(0660, dialout, named, user + 1, {}).userIsNamed);
  EXPECT_EQ(NodeRights::of(0660, dialout, named, user, {}).group, dialout);
}

TEST(NodeRights, AreLimitedByTheMask) {
  const QByteArray masked = accessList(06, 0x02, 06, "\xe8\x03\0\0", 04);
  EXPECT_FALSE(NodeRights::of(0640, dialout, masked, user, {}).userIsNamed);
  EXPECT_EQ(NodeRights::of(0640, dialout, masked, user, {}).group, std::nullopt);
}

TEST(NodeRights, MayBelongToAGroupThatOnlyTheListNames) {
  // The mode shows the mask where the group's rights would stand: the owning group may not.
  const QByteArray other = accessList(0, 0x08, 06, "\x2e\0\0\0", 06);
  EXPECT_EQ(NodeRights::of(0660, dialout, other, user, {}).group, 46U);
}

TEST(NodeRights, PreferAGroupThatTheProgramHas) {
  const QByteArray both = accessList(06, 0x08, 06, "\x2e\0\0\0", 06);
  EXPECT_EQ(NodeRights::of(0660, dialout, both, user, {}).group, dialout);
  EXPECT_EQ(NodeRights::of(0660, dialout, both, user, {46}).group, 46U);
}

TEST(NodeRights, OfAListThatCannotBeUnderstoodAreThoseOfTheMode) {
  const QByteArray list = accessList(0, 0x02, 06, "\xe8\x03\0\0", 06);
  EXPECT_EQ(NodeRights::of(0660, dialout, list.chopped(1), user, {}).group, dialout);
  EXPECT_EQ(NodeRights::of(0660, dialout, QByteArray("\x02"), user, {}).group, dialout);
  EXPECT_EQ(NodeRights::of(0660, dialout, QByteArray("\x03") + list.sliced(1), user, {}).group, dialout);
}

TEST(PosixDeviceNodes, SeeATerminalAndThroughALinkToIt) {
  const Pty terminal;
  const QTemporaryDir folder;
  const QString link = folder.filePath(QStringLiteral("servo"));
  ASSERT_TRUE(QFile::link(terminal.path(), link));
  for (const QString &path : {terminal.path(), link}) {
    const DeviceNode node = PosixDeviceNodes().look(path);
    EXPECT_TRUE(node.exists);
    EXPECT_TRUE(node.isCharacterDevice);
    EXPECT_TRUE(node.mayUse);
    EXPECT_EQ(node.path, terminal.path());
    EXPECT_EQ(node.owner, node.user);
    EXPECT_FALSE(node.byAccessList);
  }
}

TEST(PosixDeviceNodes, TellWhatIsNoDeviceOrNotThere) {
  const QTemporaryDir folder;
  EXPECT_TRUE(PosixDeviceNodes().look(folder.path()).exists);
  EXPECT_FALSE(PosixDeviceNodes().look(folder.path()).isCharacterDevice);
  const DeviceNode gone = PosixDeviceNodes().look(folder.filePath(QStringLiteral("gone")));
  EXPECT_FALSE(gone.exists);
  EXPECT_EQ(gone.path, folder.filePath(QStringLiteral("gone")));
}

TEST(PosixDeviceNodes, NameTheGroupThatMayUseTheNode) {
  const Pty terminal;
  ASSERT_EQ(::chmod(terminal.path().toLocal8Bit().constData(), 0620), 0);
  EXPECT_EQ(PosixDeviceNodes().look(terminal.path()).group, QString());
}

}  // namespace
}  // namespace tavril
