#include "platform/KeyValueObservers.h"

#include <gtest/gtest.h>

#include <atomic>
#include <future>
#include <thread>

namespace tavril {
namespace {

using namespace std::chrono_literals;

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

TEST(KeyValueObservers, AnObserverMayDropAnotherWhichIsNotToldAnyMore) {
  KeyValueObservers observers;
  KeyValueObservers::Token second;
  int told = 0;
  const auto first = observers.observe(QStringLiteral("isOpen"), [&](const Change &) { second.reset(); });
  second = observers.observe(QStringLiteral("isOpen"), [&](const Change &) { ++told; });
  observers.tell(QStringLiteral("isOpen"));
  observers.tell(QStringLiteral("isOpen"));
  EXPECT_EQ(told, 0);
}

TEST(KeyValueObservers, AnObserverMayDropItself) {
  KeyValueObservers observers;
  int told = 0;
  KeyValueObservers::Token token;
  token = observers.observe(QStringLiteral("isOpen"), [&](const Change &) {
    token.reset();
    ++told;
  });
  observers.tell(QStringLiteral("isOpen"));
  observers.tell(QStringLiteral("isOpen"));
  EXPECT_EQ(told, 1);
}

TEST(KeyValueObservers, DroppingATokenWaitsForTheHandlerThatRunsOnAnotherThread) {
  KeyValueObservers observers;
  std::promise<void> begun;
  std::atomic<bool> isRunning = false;
  auto token = observers.observe(QStringLiteral("isOpen"), [&](const Change &) {
    isRunning = true;
    begun.set_value();
    std::promise<void>().get_future().wait_for(100ms);
    isRunning = false;
  });
  std::thread teller([&] { observers.tell(QStringLiteral("isOpen")); });
  begun.get_future().wait();
  token.reset();
  EXPECT_FALSE(isRunning);
  teller.join();
}

TEST(KeyValueObservers, NobodyIsToldAfterItsTokenWasDroppedWhileAnotherThreadTells) {
  KeyValueObservers observers;
  std::atomic<bool> isOver = false;
  std::atomic<int> tellings = 0;
  std::thread teller([&] {
    for (; !isOver; ++tellings) observers.tell(QStringLiteral("isOpen"));
  });
  for (int round = 0; round < 200; ++round) {
    std::atomic<int> told = 0;
    auto token = observers.observe(QStringLiteral("isOpen"), [&](const Change &) { ++told; });
    while (told == 0) std::this_thread::yield();
    token.reset();
    const int toldAtTheEnd = told;
    const int before = tellings;
    while (tellings < before + 2) std::this_thread::yield();
    EXPECT_EQ(told, toldAtTheEnd);
  }
  isOver = true;
  teller.join();
}

}  // namespace
}  // namespace tavril
