#include "serial/SerialPortManager.h"
#include "tests/support/ManualBackground.h"
#include "tests/support/SerialBench.h"

#include <gtest/gtest.h>

#include <any>
#include <array>
#include <map>
#include <set>

namespace tavril {
namespace {

/// Two adapters that are plugged and pulled while the main queue may be held, and what is told of it.
class TwoAdapters {
 public:
  static constexpr std::size_t count = 2;

  explicit TwoAdapters(unsigned presentAtFirst) {
    for (std::size_t i = 0; i < count; ++i) {
      if ((presentAtFirst >> i & 1) == 0) continue;
      isPresent_[i] = true;
      bench_.devices.add(name(i), path(i));
    }
    manager_ = SerialPortManager::sharedSerialPortManager(bench_.environment);
    const auto note = [this](const char16_t *notification, const char16_t *key, QChar sign) {
      bench_.notifications.addObserver(
          this, QString::fromUtf16(notification), [this, key, sign](const Notification &posted) {
            const auto ports = std::any_cast<SerialPortList>(posted.userInfo.value(QString::fromUtf16(key)));
            for (const auto &port : ports) told_[port->path()] += sign;
          });
    };
    note(SerialPortsWereConnectedNotification, ConnectedSerialPortsKey, u'+');
    note(SerialPortsWereDisconnectedNotification, DisconnectedSerialPortsKey, u'-');
  }
  ~TwoAdapters() { bench_.notifications.removeObserver(this); }
  TwoAdapters(const TwoAdapters &) = delete;
  TwoAdapters &operator=(const TwoAdapters &) = delete;

  /// Plugs the adapter in where it is not, and pulls it out where it is.
  void turn(std::size_t i) {
    isPresent_[i] = !isPresent_[i];
    happened_[path(i)] += isPresent_[i] ? u'+' : u'-';
    if (isPresent_[i]) {
      bench_.devices.plugIn(name(i), path(i));
    } else {
      bench_.devices.pullOut(path(i));
    }
  }
  void release() { bench_.mainQueue.runAll(); }
  void expectTheTruth() {
    std::set<QString> truth;
    for (std::size_t i = 0; i < count; ++i) {
      if (isPresent_[i]) truth.insert(path(i));
    }
    std::set<QString> listed;
    for (const auto &port : manager_->availablePorts()) listed.insert(port->path());
    EXPECT_EQ(listed, truth);
    EXPECT_EQ(manager_->availablePorts().size(), truth.size()) << "one is listed twice";
    EXPECT_EQ(told_, happened_);
  }

 private:
  static QString name(std::size_t i) { return QStringLiteral("usbserial-ttyUSB%1").arg(i); }
  static QString path(std::size_t i) { return QStringLiteral("/dev/ttyUSB%1").arg(i); }

  SerialBench<ManualBackground> bench_;
  std::array<bool, count> isPresent_{};
  std::map<QString, QString> happened_;
  std::map<QString, QString> told_;
  std::shared_ptr<SerialPortManager> manager_;
};

TEST(PlugEvents, EverySequenceOfUpToFourOverTwoAdaptersEndsWithTheTruthHoweverLongTheMainQueueIsHeld) {
  constexpr int longest = 4;
  int sequences = 0;
  for (unsigned presentAtFirst = 0; presentAtFirst < 4; ++presentAtFirst) {
    for (int length = 1; length <= longest; ++length) {
      for (unsigned which = 0; which < 1U << length; ++which) {
        for (unsigned releasedAfter = 0; releasedAfter < 1U << (length - 1); ++releasedAfter) {
          TwoAdapters adapters(presentAtFirst);
          for (int step = 0; step < length; ++step) {
            adapters.turn(which >> step & 1);
            if ((releasedAfter >> step & 1) != 0) adapters.release();
          }
          adapters.release();
          adapters.expectTheTruth();
          ++sequences;
          ASSERT_FALSE(testing::Test::HasFailure())
              << "present at first " << presentAtFirst << ", length " << length << ", which " << which
              << ", released after " << releasedAfter;
        }
      }
    }
  }
  EXPECT_EQ(sequences, 4 * (2 * 1 + 4 * 2 + 8 * 4 + 16 * 8));
}

}  // namespace
}  // namespace tavril
