#include "platform/linux/RegistryTable.h"

#include <gtest/gtest.h>

#include <thread>
#include <vector>

namespace tavril {
namespace {

using namespace Qt::StringLiterals;

const QString name = QStringLiteral("IOTTYDevice");

DeviceProperties device(const char16_t *value) {
  return {{name, QString::fromUtf16(value)}};
}

QStringList walkToEnd(RegistryTable &table, RegistryHandle walk) {
  QStringList names;
  while (const RegistryHandle next = table.next(walk)) {
    names += table.property(next, name);
    table.release(next);
  }
  return names;
}

TEST(RegistryTable, AWalkGivesItsDevicesInOrderAndThenNone) {
  RegistryTable table;
  const RegistryHandle walk = table.addWalk({device(u"a"), device(u"b")});
  EXPECT_NE(walk, 0U);
  EXPECT_EQ(walkToEnd(table, walk), QStringList({u"a"_s, u"b"_s}));
  EXPECT_EQ(table.next(walk), 0U);
}

TEST(RegistryTable, APropertyThatIsNotThereIsNull) {
  RegistryTable table;
  const RegistryHandle walk = table.addWalk({device(u"a")});
  const RegistryHandle first = table.next(walk);
  EXPECT_TRUE(table.property(first, QStringLiteral("idVendor")).isNull());
  EXPECT_TRUE(table.property(walk, name).isNull());
  EXPECT_TRUE(table.property(0, name).isNull());
}

TEST(RegistryTable, AHandleLivesAsLongAsItHasOwners) {
  RegistryTable table;
  const RegistryHandle walk = table.addWalk({device(u"a")});
  const RegistryHandle first = table.next(walk);
  table.retain(first);
  table.release(first);
  EXPECT_EQ(table.property(first, name), QStringLiteral("a"));
  table.release(first);
  EXPECT_FALSE(table.contains(first));
  EXPECT_TRUE(table.property(first, name).isNull());
  EXPECT_EQ(table.size(), 1U);
  table.release(walk);
  EXPECT_EQ(table.size(), 0U);
}

TEST(RegistryTable, ADeviceOutlivesTheWalkThatGaveIt) {
  RegistryTable table;
  const RegistryHandle walk = table.addWalk({device(u"a")});
  const RegistryHandle first = table.next(walk);
  table.release(walk);
  EXPECT_EQ(table.property(first, name), QStringLiteral("a"));
  EXPECT_EQ(table.next(walk), 0U);
}

TEST(RegistryTable, VoidHandlesAreRetainedAndReleasedWithoutEffect) {
  RegistryTable table;
  const RegistryHandle walk = table.addWalk({});
  table.release(walk);
  table.release(walk);
  table.retain(walk);
  table.release(0);
  table.retain(0);
  EXPECT_EQ(table.size(), 0U);
}

TEST(RegistryTable, AReleasedNumberIsNotGivenToTheNextDevice) {
  RegistryTable table;
  const RegistryHandle first = table.addWalk({});
  table.release(first);
  EXPECT_NE(table.addWalk({}), first);
}

TEST(RegistryTable, AWatchIsCalledOnlyOnceItsWalkWasWalkedToTheEnd) {
  RegistryTable table;
  int calls = 0;
  const RegistryHandle walk = table.addWatch(
      DeviceEvent::Published, {device(u"a")}, [&](DeviceRegistry::Context *, RegistryHandle) { ++calls; },
      nullptr);
  table.announce(DeviceEvent::Published, device(u"b"));
  EXPECT_EQ(calls, 0);
  EXPECT_EQ(walkToEnd(table, walk), QStringList({u"a"_s, u"b"_s}));
  table.announce(DeviceEvent::Published, device(u"c"));
  EXPECT_EQ(calls, 1);
}

TEST(RegistryTable, AWatchThatIsNotWalkedToTheEndIsNotCalledAgainButFilled) {
  RegistryTable table;
  int calls = 0;
  const RegistryHandle walk = table.addWatch(
      DeviceEvent::Published, {}, [&](DeviceRegistry::Context *, RegistryHandle) { ++calls; }, nullptr);
  EXPECT_EQ(table.next(walk), 0U);
  table.announce(DeviceEvent::Published, device(u"a"));
  table.announce(DeviceEvent::Published, device(u"b"));
  EXPECT_EQ(calls, 1);
  EXPECT_EQ(walkToEnd(table, walk), QStringList({u"a"_s, u"b"_s}));
  table.announce(DeviceEvent::Published, device(u"c"));
  EXPECT_EQ(calls, 2);
}

TEST(RegistryTable, CallsThatAreAnsweredLateInTheirOrderMeetTheDevicesInTheirOrder) {
  RegistryTable table;
  std::vector<RegistryHandle> calls;
  const auto later = [&](DeviceRegistry::Context *, RegistryHandle walk) { calls.push_back(walk); };
  const RegistryHandle published = table.addWatch(DeviceEvent::Published, {}, later, nullptr);
  const RegistryHandle terminated = table.addWatch(DeviceEvent::Terminated, {}, later, nullptr);
  for (const RegistryHandle watch : {published, terminated}) EXPECT_EQ(table.next(watch), 0U);
  table.announce(DeviceEvent::Published, device(u"a"));
  table.announce(DeviceEvent::Published, device(u"b"));
  table.announce(DeviceEvent::Terminated, device(u"a"));
  table.announce(DeviceEvent::Published, device(u"a"));
  table.announce(DeviceEvent::Terminated, device(u"b"));
  ASSERT_EQ(calls, (std::vector{published, terminated, published, terminated}));
  EXPECT_EQ(walkToEnd(table, calls[0]), QStringList({u"a"_s, u"b"_s}));
  EXPECT_EQ(walkToEnd(table, calls[1]), QStringList(u"a"_s));
  EXPECT_EQ(walkToEnd(table, calls[2]), QStringList(u"a"_s));
  EXPECT_EQ(walkToEnd(table, calls[3]), QStringList(u"b"_s));
  EXPECT_EQ(table.next(published), 0U);
}

TEST(RegistryTable, ARunThatWasAnsweredIsNotContinuedByTheNext) {
  RegistryTable table;
  int calls = 0;
  const RegistryHandle walk = table.addWatch(
      DeviceEvent::Published, {}, [&](DeviceRegistry::Context *, RegistryHandle) { ++calls; }, nullptr);
  EXPECT_EQ(table.next(walk), 0U);
  for (int round = 1; round <= 3; ++round) {
    table.announce(DeviceEvent::Published, device(u"a"));
    table.announce(DeviceEvent::Terminated, device(u"a"));
    EXPECT_EQ(calls, round);
    EXPECT_EQ(walkToEnd(table, walk), QStringList(u"a"_s));
  }
}

TEST(RegistryTable, AWatchIsGivenItsContextAndItsWalk) {
  struct Owner : DeviceRegistry::Context {
    QString description() const override { return QStringLiteral("owner"); }
  } owner;
  RegistryTable table;
  DeviceRegistry::Context *seenContext = nullptr;
  QStringList seen;
  const auto callback = [&](DeviceRegistry::Context *context, RegistryHandle walk) {
    seenContext = context;
    seen += walkToEnd(table, walk);
  };
  const RegistryHandle walk = table.addWatch(DeviceEvent::Terminated, {}, callback, &owner);
  EXPECT_EQ(table.next(walk), 0U);
  table.announce(DeviceEvent::Terminated, device(u"a"));
  table.announce(DeviceEvent::Published, device(u"x"));
  table.announce(DeviceEvent::Terminated, device(u"b"));
  EXPECT_EQ(seen, QStringList({u"a"_s, u"b"_s}));
  EXPECT_EQ(seenContext, &owner);
}

TEST(RegistryTable, AReleasedWatchIsNotCalled) {
  RegistryTable table;
  int calls = 0;
  const RegistryHandle walk = table.addWatch(
      DeviceEvent::Published, {}, [&](DeviceRegistry::Context *, RegistryHandle) { ++calls; }, nullptr);
  EXPECT_EQ(table.next(walk), 0U);
  table.release(walk);
  table.announce(DeviceEvent::Published, device(u"a"));
  EXPECT_EQ(calls, 0);
}

TEST(RegistryTable, AWatchReleasedByAnEarlierCallbackIsNotCalledButThoseAfterItAre) {
  RegistryTable table;
  QString called;
  RegistryHandle second = 0;
  const RegistryHandle first = table.addWatch(
      DeviceEvent::Published, {},
      [&](DeviceRegistry::Context *, RegistryHandle walk) {
        called += u'1';
        table.release(second);
        table.release(walk);
      },
      nullptr);
  const auto note = [&](QChar which) {
    return [&called, which](DeviceRegistry::Context *, RegistryHandle) { called += which; };
  };
  second = table.addWatch(DeviceEvent::Published, {}, note(u'2'), nullptr);
  const RegistryHandle third = table.addWatch(DeviceEvent::Published, {}, note(u'3'), nullptr);
  for (const RegistryHandle watch : {first, second, third}) EXPECT_EQ(table.next(watch), 0U);
  table.announce(DeviceEvent::Published, device(u"a"));
  EXPECT_EQ(called, QStringLiteral("13"));
  EXPECT_EQ(table.size(), 1U);
}

TEST(RegistryTable, ManyThreadsCountTheSameHandle) {
  RegistryTable table;
  const RegistryHandle walk = table.addWalk({device(u"a")});
  const RegistryHandle first = table.next(walk);
  const auto work = [&] {
    for (int i = 0; i < 1000; ++i) {
      table.retain(first);
      EXPECT_EQ(table.property(first, name), QStringLiteral("a"));
      table.release(first);
    }
  };
  std::thread one(work);
  std::thread two(work);
  one.join();
  two.join();
  EXPECT_TRUE(table.contains(first));
  table.release(first);
  EXPECT_FALSE(table.contains(first));
}

}  // namespace
}  // namespace tavril
