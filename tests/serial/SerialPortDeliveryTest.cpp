#include "serial/DeliveryRule.h"
#include "serial/LineSession.h"
#include "tests/support/SerialBench.h"
#include "tests/support/WaitFor.h"

#include <gtest/gtest.h>

#include <mutex>
#include <set>
#include <thread>

namespace tavril {
namespace {

using namespace std::chrono_literals;
using Deliveries = std::vector<QByteArray>;

/// A letter counts the bytes it begins: "c12" is whole, "c1" is not. Other bytes begin nothing.
DeliveryRule::Verdict byFirstLetter(const QByteArray &bytes) {
  if (bytes[0] < 'a' || bytes[0] > 'z') return DeliveryRule::Verdict::asItIs();
  const qsizetype length = bytes[0] - 'a' + 1;
  return bytes.size() < length ? DeliveryRule::Verdict::moreToCome() : DeliveryRule::Verdict::whole(length);
}

std::shared_ptr<const DeliveryRule> waiting(std::chrono::milliseconds longest) {
  return std::make_shared<const DeliveryRule>(DeliveryRule{byFirstLetter, longest});
}

class SerialPortDelivery : public testing::Test {
 protected:
  SerialPortDelivery() { port->setDelegate(delegate); }
  ~SerialPortDelivery() override {
    port->setDelegate({});
    port->close();
  }

  bool hasDelivered(std::size_t count) {
    return bench.mainQueue.runUntil([&] { return delegate->deliveries.size() >= count; });
  }
  /// So that the next piece is not in the same read.
  bool writeAndWaitUntilRead(const QByteArray &bytes) {
    const int before = bench.terminal.readsWithBytes();
    pty.write(bytes);
    return waitFor([&] { return bench.terminal.readsWithBytes() > before; });
  }

  Pty pty;
  SerialBench<> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

TEST_F(SerialPortDelivery, WithoutARuleEachReadIsOneDelivery) {
  EXPECT_EQ(port->deliveryRule(), nullptr) << "the default";
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(writeAndWaitUntilRead("c"));
  ASSERT_TRUE(writeAndWaitUntilRead("12b1"));
  ASSERT_TRUE(hasDelivered(2));
  EXPECT_EQ(delegate->deliveries, (Deliveries{"c", "12b1"}));
}

TEST_F(SerialPortDelivery, PiecesThatComeInTimeAreOneDelivery) {
  port->setDeliveryRule(waiting(1h));
  ASSERT_TRUE(port->open());
  for (const char *piece : {"d", "1", "23"}) ASSERT_TRUE(writeAndWaitUntilRead(piece));
  ASSERT_TRUE(hasDelivered(1));
  EXPECT_EQ(delegate->deliveries, Deliveries{"d123"});
}

TEST_F(SerialPortDelivery, AWholeOneBehindAFalseBeginningIsADeliveryOfItsOwn) {
  port->setDeliveryRule(waiting(1h));
  ASSERT_TRUE(port->open());
  for (const char *read : {"z", "c12"}) ASSERT_TRUE(writeAndWaitUntilRead(read));
  ASSERT_TRUE(hasDelivered(2));
  EXPECT_EQ(delegate->deliveries, (Deliveries{"z", "c12"}));
}

TEST_F(SerialPortDelivery, WhatIsGluedIsTwoDeliveries) {
  port->setDeliveryRule(waiting(1h));
  ASSERT_TRUE(port->open());
  pty.write("c12b1");
  ASSERT_TRUE(hasDelivered(2));
  EXPECT_EQ(delegate->deliveries, (Deliveries{"c12", "b1"}));
}

TEST_F(SerialPortDelivery, ABeginningWhoseRestDoesNotComeInTimeIsDeliveredAsItIs) {
  port->setDeliveryRule(waiting(20ms));
  ASSERT_TRUE(port->open());
  pty.write("c1");
  ASSERT_TRUE(hasDelivered(1));
  pty.write("2");
  ASSERT_TRUE(hasDelivered(2));
  EXPECT_EQ(delegate->deliveries, (Deliveries{"c1", "2"}));
}

TEST_F(SerialPortDelivery, ClosingDropsABeginningThatWaits) {
  port->setDeliveryRule(waiting(1h));
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(writeAndWaitUntilRead("c1"));
  ASSERT_TRUE(port->close());
  ASSERT_TRUE(port->open());
  pty.write("2");
  ASSERT_TRUE(hasDelivered(1));
  EXPECT_EQ(delegate->deliveries, Deliveries{"2"}) << "nothing of the opening before";
}

TEST_F(SerialPortDelivery, ABeginningIsDeliveredAtOnceWhenThePlugIsPulled) {
  bench.terminal.setPinsOfLine(0);  // or the port might be closed before the bytes are told
  port->setDeliveryRule(waiting(1h));
  ASSERT_TRUE(port->open());
  for (const char *piece : {"d", "1"}) ASSERT_TRUE(writeAndWaitUntilRead(piece));
  pty.unplug();
  ASSERT_TRUE(hasDelivered(2));
  EXPECT_EQ(delegate->deliveries, (Deliveries{"d", "1"})) << "each as it was read";
}

TEST_F(SerialPortDelivery, TheRuleOfAnOpenPortActsFromTheNextOpeningOn) {
  ASSERT_TRUE(port->open());
  port->setDeliveryRule(waiting(1h));
  pty.write("c1");
  ASSERT_TRUE(hasDelivered(1));
  ASSERT_TRUE(port->close());
  ASSERT_TRUE(port->open());
  pty.write("c12b1");
  ASSERT_TRUE(hasDelivered(3));
  EXPECT_EQ(delegate->deliveries, (Deliveries{"c1", "c12", "b1"}));
}

TEST_F(SerialPortDelivery, TheRuleIsAskedOnTheThreadThatReads) {
  std::mutex mutex;
  std::set<std::thread::id> askedOn;
  port->setDeliveryRule(std::make_shared<const DeliveryRule>(DeliveryRule{[&](const QByteArray &bytes) {
                                                                            const std::lock_guard lock(mutex);
                                                                            askedOn.insert(
                                                                                std::this_thread::get_id());
                                                                            return byFirstLetter(bytes);
                                                                          },
                                                                          1h}));
  ASSERT_TRUE(port->open());
  for (const char *bytes : {"b1", "c12"}) ASSERT_TRUE(writeAndWaitUntilRead(bytes));
  ASSERT_TRUE(hasDelivered(2));
  const std::lock_guard lock(mutex);
  EXPECT_EQ(askedOn.size(), 1U);
  EXPECT_FALSE(askedOn.contains(std::this_thread::get_id()));
}

TEST_F(SerialPortDelivery, EachPartOfAReadTakesAPlaceOfItsOwnInTheMainQueue) {
  port->setDeliveryRule(waiting(1h));
  ASSERT_TRUE(port->open());
  pty.write(QByteArray(1000, 'a'));
  ASSERT_TRUE(waitFor([&] { return bench.mainQueue.pending() > LineSession::backpressureSlots; }));
  EXPECT_EQ(bench.mainQueue.pending(), LineSession::backpressureSlots + 1) << "the parts, and the opening";
  ASSERT_TRUE(hasDelivered(1000));
  EXPECT_EQ(delegate->deliveries, Deliveries(1000, "a"));
}

TEST_F(SerialPortDelivery, ABeginningThatHadToWaitForAPlaceStillGetsItsRest) {
  port->setDeliveryRule(waiting(1ms));
  ASSERT_TRUE(port->open());
  // The read loop has no place for the beginning until the main queue runs, and by then its time is over.
  pty.write(QByteArray(LineSession::backpressureSlots, 'a') + "c1");
  ASSERT_TRUE(waitFor([&] { return bench.mainQueue.pending() > LineSession::backpressureSlots; }));
  pty.write("2");
  ASSERT_TRUE(hasDelivered(LineSession::backpressureSlots + 1));
  EXPECT_EQ(delegate->deliveries.back(), "c12") << "it was there, only not read yet";
}

}  // namespace
}  // namespace tavril
