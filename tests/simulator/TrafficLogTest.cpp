#include "tests/simulator/EndpointBench.h"

#include <gtest/gtest.h>

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;

TEST(TrafficLog, TellsACommandWithTheBytesOfItsDeliveryAndThenItsReply) {
  EndpointBench bench;
  bench.exchange({0xFF, 0x05, 0x91, 0x01, 0xFE});
  EXPECT_EQ(bench.logLines(), (QStringList{QStringLiteral("-> FF 05 91 01 FE  read register 1  (50 bytes)"),
                                           QStringLiteral("<- FF 07 91 01 00 01 FE  register 1 is 1")}));
}

TEST(TrafficLog, HasWordsForEveryCommandAndReply) {
  EndpointBench bench;
  bench.exchange({0xFF, 0x04, 0x90, 0xFE});
  bench.exchange({0xFF, 0x07, 0x92, 0x08, 0x01, 0x2C, 0xFE});
  bench.exchange({0xFF, 0x04, 0x93, 0xFE});
  bench.exchange({0xFF, 0x04, 0x94, 0xFE});
  bench.exchange({0xFF, 0x04, 0x95, 0xFE});
  bench.exchange({0xFF, 0x06, 0x96, 0x02, 0x01, 0xFE});
  bench.exchange({0xFF, 0x04, 0x97, 0xFE});
  bench.exchange({0xFF, 0x05, 0xF9, 0x03, 0xFE});
  bench.exchange({0xFF, 0x04, 0x42, 0xFE});
  bench.exchange({0xFF, 0x05, 0x90, 0x00, 0xFE});
  const QStringList expected{
      QStringLiteral("-> FF 04 90 FE  detect the servo  (50 bytes)"),
      QStringLiteral("<- FF 05 90 01 FE  one servo"),
      QStringLiteral("-> FF 07 92 08 01 2C FE  write 300 to register 8  (50 bytes)"),
      QStringLiteral("<- FF 05 92 08 FE  register 8 written"),
      QStringLiteral("-> FF 04 93 FE  release the motor  (50 bytes)"),
      QStringLiteral("<- FF 04 93 FE  released"),
      QStringLiteral("-> FF 04 94 FE  reboot  (50 bytes)"),
      QStringLiteral("<- FF 04 94 FE  rebooted"),
      QStringLiteral("-> FF 04 95 FE  factory reset  (50 bytes)"),
      QStringLiteral("<- FF 04 95 FE  factory values restored"),
      QStringLiteral("-> FF 06 96 02 01 FE  set position 513  (50 bytes)"),
      QStringLiteral("<- FF 04 96 FE  position set"),
      QStringLiteral("-> FF 04 97 FE  read position  (50 bytes)"),
      QStringLiteral("<- FF 06 97 02 00 FE  position is 512"),
      QStringLiteral("-> FF 05 F9 03 FE  error report request 3  (50 bytes)"),
      QStringLiteral("<- FF 05 F9 03 FE  error report 3: value over range"),
      QStringLiteral("-> FF 04 42 FE  unknown command  (50 bytes)"),
      QStringLiteral("<- FF 05 F9 00 FE  error report 0: unknown command"),
      QStringLiteral("-> FF 05 90 00 FE  wrong length, 4 expected  (50 bytes)"),
      QStringLiteral("<- FF 05 F9 02 FE  error report 2: wrong packet length"),
  };
  EXPECT_EQ(bench.logLines(), expected);
}

TEST(TrafficLog, ADeliveryIsOverWhenTheNextCommandBegins) {
  EndpointBench bench;
  bench.endpoint.receive(Bytes{0xFF, 0x04, 0x90, 0xFE, 0x00, 0x00});
  EXPECT_EQ(bench.logLines(), QStringList{});
  bench.endpoint.receive(Bytes{0xFF, 0x04, 0x93, 0xFE});
  EXPECT_EQ(bench.logLines(), QStringList{QStringLiteral("-> FF 04 90 FE  detect the servo  (6 bytes)")});
}

TEST(TrafficLog, ADeliveryIsOverWhenItsPaddingPauses) {
  EndpointBench bench;
  bench.endpoint.receive(Bytes{0xFF, 0x04, 0x90, 0xFE});
  bench.due();
  bench.endpoint.advance(19ms);
  EXPECT_EQ(bench.logLines(), QStringList{}) << "the reply waits for the command's line";
  bench.endpoint.advance(1ms);
  EXPECT_EQ(bench.logLines(), (QStringList{QStringLiteral("-> FF 04 90 FE  detect the servo  (4 bytes)"),
                                           QStringLiteral("<- FF 05 90 01 FE  one servo")}));
}

TEST(TrafficLog, PaddingBeyondTheFiftyBytesIsStray) {
  EndpointBench bench;
  Bytes bytes{0xFF, 0x04, 0x90, 0xFE};
  bytes.resize(52, 0x00);
  bench.endpoint.receive(bytes);
  bench.dueInTheEnd();
  EXPECT_EQ(bench.logLines(), (QStringList{QStringLiteral("-> FF 04 90 FE  detect the servo  (50 bytes)"),
                                           QStringLiteral("-> 00 00  stray  (2 bytes)"),
                                           QStringLiteral("<- FF 05 90 01 FE  one servo")}));
}

TEST(TrafficLog, TellsStrayBytesTogether) {
  EndpointBench bench;
  bench.endpoint.receive(Bytes{0x41, 0x42, 0x00, 0xFF, 0x04, 0x90, 0xFE});
  EXPECT_EQ(bench.logLines(), QStringList{QStringLiteral("-> 41 42 00  stray  (3 bytes)")});
}

TEST(TrafficLog, TellsAFrameThatWasNeverFinished) {
  EndpointBench bench;
  bench.endpoint.receive(Bytes{0xFF, 0x05, 0x91});
  bench.dueInTheEnd();
  EXPECT_EQ(bench.logLines(),
            (QStringList{QStringLiteral("-> FF 05 91  never finished  (3 bytes)"),
                         QStringLiteral("<- FF 05 F9 01 FE  error report 1: packet timed out")}));
}

TEST(TrafficLog, TellsWhatIsLostInTheStartUp) {
  EndpointBench bench({.startUp = 1s});
  bench.endpoint.receive(Bytes{0xFF, 0x04, 0x90, 0xFE});
  EXPECT_EQ(bench.logLines(), QStringList{QStringLiteral("-> FF 04 90 FE  lost in the start-up  (4 bytes)")});
}

TEST(TrafficLog, ShowsASpoiltReplyAsItLeft) {
  EndpointBench bench({.wrongLength = true});
  bench.exchange({0xFF, 0x04, 0x90, 0xFE});
  EXPECT_EQ(bench.logLines().value(1), QStringLiteral("<- FF 06 90 01 FE  one servo"));
}

TEST(TrafficLog, TellsTheCommandAtWhichThePlugWasPulled) {
  EndpointBench bench({.unplugAfter = 1});
  bench.endpoint.receive(Bytes{0xFF, 0x04, 0x90, 0xFE});
  EXPECT_EQ(bench.logLines(), QStringList{QStringLiteral("-> FF 04 90 FE  detect the servo  (4 bytes)")});
}

}  // namespace
}  // namespace tavril::simulator
