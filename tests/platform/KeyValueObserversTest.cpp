#include "platform/KeyValueObservers.h"

#include <gtest/gtest.h>

namespace tavril {
namespace {

TEST(KeyValueObservers, TellsOnlyTheObserversOfTheKey) {
  KeyValueObservers observers;
  int open = 0;
  int pins = 0;
  const auto first = observers.observe(QStringLiteral("isOpen"), [&](const Change &) { ++open; });
  const auto second = observers.observe(QStringLiteral("CTS"), [&](const Change &) { ++pins; });
  observers.tell(QStringLiteral("isOpen"));
  EXPECT_EQ(open, 1);
  EXPECT_EQ(pins, 0);
}

TEST(KeyValueObservers, CarriesTheIndexesOfAListChange) {
  KeyValueObservers observers;
  Change seen;
  const auto token = observers.observe(QStringLiteral("availablePorts"), [&](const Change &c) { seen = c; });
  observers.tell(QStringLiteral("availablePorts"), {Change::Kind::Removal, {2, 5}});
  EXPECT_EQ(seen.kind, Change::Kind::Removal);
  EXPECT_EQ(seen.indexes, (std::vector<std::size_t>{2, 5}));
}

TEST(KeyValueObservers, StopsWhenTheTokenIsDropped) {
  KeyValueObservers observers;
  int told = 0;
  auto token = observers.observe(QStringLiteral("isOpen"), [&](const Change &) { ++told; });
  token.reset();
  observers.tell(QStringLiteral("isOpen"));
  EXPECT_EQ(told, 0);
}

TEST(KeyValueObservers, AnObserverMayDropAnother) {
  KeyValueObservers observers;
  KeyValueObservers::Token second;
  int told = 0;
  const auto first = observers.observe(QStringLiteral("isOpen"), [&](const Change &) { second.reset(); });
  second = observers.observe(QStringLiteral("isOpen"), [&](const Change &) { ++told; });
  observers.tell(QStringLiteral("isOpen"));
  observers.tell(QStringLiteral("isOpen"));
  EXPECT_EQ(told, 1);
}

}  // namespace
}  // namespace tavril
