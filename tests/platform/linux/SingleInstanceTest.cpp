#include "platform/linux/SingleInstance.h"
#include "tests/support/SessionBus.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <memory>
#include <thread>

namespace tavril {
namespace {

/// Each start has a connection of its own, as each process has.
class SingleInstanceTest : public testing::Test {
 protected:
  ~SingleInstanceTest() override {
    for (const QString &name : names_) QDBusConnection::disconnectFromBus(name);
  }

  std::unique_ptr<SingleInstance> start() {
    names_.append(QStringLiteral("start %1 %2").arg(names_.size()).arg(bus_.address()));
    return std::make_unique<SingleInstance>(
        QDBusConnection::connectToBus(bus_.address(), names_.constLast()));
  }

  /// As another process asks, which waits while this one's event loop runs.
  bool raiseOther(const SingleInstance &second, const QString &token = {}) {
    bool done = false;
    bool answered = false;
    std::thread caller([&] {
      answered = second.raiseOther(token);
      QMetaObject::invokeMethod(QCoreApplication::instance(), [&] { done = true; });
    });
    EXPECT_TRUE(waitFor([&] { return done; }));
    caller.join();
    return answered;
  }

  SessionBus bus_;
  QStringList names_;
};

TEST_F(SingleInstanceTest, TheFirstStartGetsTheNameAndTheSecondDoesNot) {
  const auto first = start();
  const auto second = start();
  EXPECT_TRUE(first->claim());
  EXPECT_FALSE(second->claim());
}

TEST_F(SingleInstanceTest, TheSecondStartHasTheFirstRaiseItsWindow) {
  const auto first = start();
  ASSERT_TRUE(first->claim());
  QStringList raised;
  first->setRaise([&](const QString &token) { raised.append(token); });
  const auto second = start();
  ASSERT_FALSE(second->claim());
  EXPECT_TRUE(raiseOther(*second, QStringLiteral("a token")));
  EXPECT_TRUE(raiseOther(*second));
  EXPECT_EQ(raised, QStringList({QStringLiteral("a token"), QString()}));
}

TEST_F(SingleInstanceTest, AStartThatHasNoWindowYetAnswersAllTheSame) {
  const auto first = start();
  ASSERT_TRUE(first->claim());
  const auto second = start();
  ASSERT_FALSE(second->claim());
  EXPECT_TRUE(raiseOther(*second));
}

TEST_F(SingleInstanceTest, TheNameIsFreeAgainWhenTheFirstHasEnded) {
  auto first = start();
  ASSERT_TRUE(first->claim());
  first.reset();
  const auto next = start();
  EXPECT_TRUE(next->claim());
}

TEST_F(SingleInstanceTest, WhoeverHasTheNameButDoesNotAnswerIsTold) {
  ASSERT_TRUE(bus_.connection().registerService(QStringLiteral("org.tavril.Tavril")));
  const auto second = start();
  ASSERT_FALSE(second->claim());
  // Answers with an error, for it has no such object.
  EXPECT_FALSE(raiseOther(*second));
}

TEST_F(SingleInstanceTest, WithoutABusEveryStartIsTheFirst) {
  SingleInstance first{QDBusConnection(QStringLiteral("no such connection"))};
  SingleInstance second{QDBusConnection(QStringLiteral("no such connection"))};
  EXPECT_TRUE(first.claim());
  EXPECT_TRUE(second.claim());
}

TEST_F(SingleInstanceTest, ABusThatHasEndedIsAsGoodAsNone) {
  const auto first = start();
  bus_.stop();
  EXPECT_TRUE(first->claim());
}

}  // namespace
}  // namespace tavril
