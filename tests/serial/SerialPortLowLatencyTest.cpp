#include "tests/support/ManualBackground.h"
#include "tests/support/SerialBench.h"

#include <gtest/gtest.h>

#include <cerrno>

namespace tavril {
namespace {

class SerialPortLowLatency : public testing::Test {
 protected:
  SerialPortLowLatency() { port->setDelegate(delegate); }
  ~SerialPortLowLatency() override { port->close(); }

  std::optional<bool> onLine() const { return bench.terminal.lowLatencyOfLine(); }
  int asked() const { return bench.terminal.count(Call::SetLowLatency); }
  /// The events of a port that opened and closed without trouble.
  void expectNoErrors() {
    bench.mainQueue.runAll();
    EXPECT_TRUE(delegate->errors.empty());
  }

  Pty pty;
  SerialBench<ManualBackground> bench;
  std::shared_ptr<SerialPort> port = bench.port("usbport-test", pty.path());
  std::shared_ptr<RecordingDelegate> delegate = std::make_shared<RecordingDelegate>();
};

TEST_F(SerialPortLowLatency, IsNotAskedForByDefault) {
  bench.terminal.setLowLatencyOfLine(false);
  EXPECT_FALSE(port->usesLowLatency());
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(port->close());
  EXPECT_EQ(asked(), 0);
}

TEST_F(SerialPortLowLatency, IsOnWhileThePortIsOpenAndPutBackWhenItCloses) {
  bench.terminal.setLowLatencyOfLine(false);
  port->setUsesLowLatency(true);
  EXPECT_EQ(asked(), 0) << "a closed port has nobody to ask";
  ASSERT_TRUE(port->open());
  EXPECT_EQ(onLine(), true);
  ASSERT_TRUE(port->close());
  EXPECT_EQ(onLine(), false);
  expectNoErrors();
}

TEST_F(SerialPortLowLatency, StaysOnWhereItWasOnBefore) {
  bench.terminal.setLowLatencyOfLine(true);
  port->setUsesLowLatency(true);
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(port->close());
  EXPECT_EQ(onLine(), true);
}

TEST_F(SerialPortLowLatency, IsPutBackWhenAnOpenPortIsDropped) {
  bench.terminal.setLowLatencyOfLine(false);
  port->setUsesLowLatency(true);
  ASSERT_TRUE(port->open());
  bench.mainQueue.runAll();
  bench.listed.clear();
  port = nullptr;
  EXPECT_EQ(onLine(), false);
  port = bench.port("usbport-test", pty.path());
}

TEST_F(SerialPortLowLatency, ATerminalWithoutThatChoiceIsNoError) {
  port->setUsesLowLatency(true);
  ASSERT_TRUE(port->open());  // a pseudo-terminal, which answers ENOTTY
  EXPECT_EQ(asked(), 1);
  ASSERT_TRUE(port->close());
  EXPECT_EQ(asked(), 1) << "nothing to put back";
  expectNoErrors();
}

TEST_F(SerialPortLowLatency, ADriverThatRefusesIsNoErrorAndNothingIsPutBack) {
  bench.terminal.setLowLatencyOfLine(false);
  for (const int error : {ENOTTY, EINVAL, EPERM, EIO, ENOSYS}) {
    bench.terminal.fail(Call::SetLowLatency, error, 1);
    port->setUsesLowLatency(true);
    ASSERT_TRUE(port->open());
    const int before = asked();
    ASSERT_TRUE(port->close());
    EXPECT_EQ(asked(), before) << error;
  }
  expectNoErrors();
}

TEST_F(SerialPortLowLatency, ARefusalIsNotTakenForTheSettingOfTheOpeningBefore) {
  bench.terminal.setLowLatencyOfLine(false);
  port->setUsesLowLatency(true);
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(port->close());
  bench.terminal.setLowLatencyOfLine(true);
  port->setUsesLowLatency(false);
  ASSERT_TRUE(port->open());
  ASSERT_TRUE(port->close());
  EXPECT_EQ(onLine(), true) << "not asked for, so not touched";
}

}  // namespace
}  // namespace tavril
