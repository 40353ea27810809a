// Plugs, unplugs and traffic in random order.
#include "serial/SerialPort.h"
#include "serial/SerialPortManager.h"
#include "tests/vm/guest/KernelBench.h"

#include <QTest>

#include <array>
#include <cstdio>
#include <random>
#include <set>

namespace tavril::vm {
namespace {

constexpr int eventCount = 200;

class Random : public KernelBench {
 protected:
  Random() {
    bool given = false;
    seed = qEnvironmentVariable("TAVRIL_VM_SEED").toUInt(&given);
    if (!given) seed = std::random_device()();
    std::printf("the seed is %u; the same again: TAVRIL_VM_SEED=%u\n", seed, seed);
    std::fflush(stdout);
    random.seed(seed);
    for (auto &values : allowed) {
      for (const int value : factorySettings) values.push_back({value});
    }
  }

  int below(int end) { return std::uniform_int_distribution<int>(0, end - 1)(random); }
  bool linked() const {
    const auto port = editor->application->serialPort();
    return port && port->isOpen();
  }
  Function &commands() { return *editor->window->controller().FunctionCMD(); }

  /// A legal value for one of the registers with room to choose; every servo may have got it.
  void writeSetting() {
    static constexpr std::array registers{1, 5, 8, 9, 10, 11, 12, 13, 14};
    const int number = registers[static_cast<std::size_t>(below(static_cast<int>(registers.size())))];
    const int value = below(250);
    for (auto &values : allowed) values[static_cast<std::size_t>(number) - 1].insert(value);
    commands().WriteServoSettingValue(static_cast<std::uint8_t>(number), value);
  }

  void noise(int adapter) {
    QByteArray bytes(1 + below(40), '\0');
    // No start mark: that would begin a read-out, of which there are enough.
    for (char &byte : bytes) byte = static_cast<char>(below(255));
    host->send(adapter, bytes);
  }

  void act() {
    const int adapter = below(2);
    switch (below(12)) {
      case 0:
      case 1:
      case 2:
        return host->plugIn(adapter);
      case 3:
        return host->pullOut(adapter);
      case 4:
        return host->pullOutIn(adapter, std::chrono::milliseconds(below(80)));
      case 5:
        return host->pullOutAfter(adapter, 1 + below(30));
      case 6:
      case 7:
        return editor->application->serialFormat();
      case 8:
        return commands().ReadMotorParameter(1);
      case 9:
        return writeSetting();
      case 10:
        return noise(adapter);
      default:
        commands().SetServoPosition(below(1024));
        if (linked() && below(3) == 0) editor->application->serialPort()->close();
    }
  }

  /// Plugs in and reads. On a busy host the kernel is seconds behind: it still shows the port of an earlier
  /// plug and then takes it away. As a user does, this connects again for as long as the port is not open.
  void connectUntilRead() {
    host->plugIn(0);
    for (int attempt = 0; attempt < 20 && !editor->everythingRead(); ++attempt) {
      ASSERT_TRUE(listed({QString::fromUtf16(first)}));
      ASSERT_TRUE(waitFor([&] { return !editor->state.allSerialPortsInfo.empty(); }));
      editor->clearScreen();
      editor->connectToServo();
      QTest::qWait(500);
      waitFor([&] { return editor->everythingRead() || !linked(); });
    }
    ASSERT_TRUE(readOut());
  }

  unsigned seed = 0;
  std::mt19937 random;
  std::array<std::vector<std::set<int>>, 2> allowed;
};

TEST_F(Random, TwoHundredEventsBreakNothing) {
  start();
  for (int event = 0; event < eventCount; ++event) {
    act();
    QTest::qWait(below(120));
  }

  // Whatever state that has led to: all out, all in, and everything works.
  for (const int adapter : {0, 1}) host->pullOut(adapter);
  ASSERT_TRUE(listed({}));
  expectQuiet();
  for (const int adapter : {0, 1}) {
    const std::vector<int> settings = host->settings(adapter);
    for (std::size_t i = 0; i < settings.size(); ++i) {
      EXPECT_TRUE(allowed[static_cast<std::size_t>(adapter)][i].contains(settings[i]))
          << "servo " << adapter << ", register " << i + 1 << ": " << settings[i] << " was never written";
    }
  }
  // With two adapters the application's list may keep one that is gone: it compares place by place.
  editor.reset();
  start();
  connectUntilRead();
  EXPECT_TRUE(listed({QString::fromUtf16(first)}));
  EXPECT_EQ(editor->textOf("sID_value").toInt(), host->settings(0)[0]);
}

}  // namespace
}  // namespace tavril::vm
