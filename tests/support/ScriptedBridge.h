#pragma once

#include "tests/support/Pty.h"

#include <QByteArray>
#include <QList>
#include <QSocketNotifier>
#include <QString>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <functional>
#include <memory>
#include <string>
#include <utility>
#include <vector>

namespace tavril {

/// A bridge and its servo of which the test decides, command by command, what is sent back and in which
/// deliveries: one is handed over only when the reader has taken the one before. Runs in the event loop.
class ScriptedBridge {
 public:
  /// Told the command without its padding, and the whole reply to it; returns the deliveries to send.
  using Script = std::function<QList<QByteArray>(const QByteArray &command, const QByteArray &reply)>;

  explicit ScriptedBridge(Script script = healthy)
      : script_(std::move(script)),
        notifier_(std::make_unique<QSocketNotifier>(pty_.master(), QSocketNotifier::Read)) {
    QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { receive(); });
    turn_.setTimerType(Qt::PreciseTimer);
    turn_.setInterval(1);
    QObject::connect(&turn_, &QTimer::timeout, &turn_, [this] { send(); });
  }

  static QList<QByteArray> healthy(const QByteArray &, const QByteArray &reply) { return {reply}; }
  static QList<QByteArray> mute(const QByteArray &, const QByteArray &) { return {}; }

  QString path() const { return pty_.path(); }
  const Pty &terminal() const { return pty_; }

  void unplug() {
    turn_.stop();
    notifier_.reset();
    pty_.unplug();
  }

  /// The commands that came: 0 for the detection, the register's number for a read, -1 for all else, also
  /// for one that is not filled to 50 bytes with zeros.
  const std::vector<int> &commands() const { return commands_; }

  /// The longest time between two deliveries that were to follow each other. Who claims something of pieces
  /// that come soon after each other has to see whether they did.
  std::chrono::steady_clock::duration longestGap() const { return longestGap_; }

  /// How the report shows this servo.
  static std::string json(const std::string &port) {
    return "{\n  \"port\": \"" + port +
           "\",\n  \"registers\": {\n"
           "    \"sid\": 42,\n    \"ack_policy\": 1,\n    \"alarm_led_policy\": 1,\n"
           "    \"torque_policy\": 0,\n    \"max_tempertaure\": 77,\n    \"min_voltage\": 61,\n"
           "    \"max_voltage\": 83,\n    \"max_load\": 384,\n    \"kp\": 258,\n    \"ki\": 32766,\n"
           "    \"kd\": 8001,\n    \"over_temperature\": 13,\n    \"over_voltage\": 21,\n"
           "    \"over_load\": 31,\n    \"calibration_angle\": -7,\n    \"status_error\": \"4 Items\",\n"
           "    \"status_detail\": \"3 Items\",\n    \"present_voltage\": 75,\n"
           "    \"present_temperature\": 33,\n    \"present_load\": 19\n  }\n}\n";
  }

 private:
  static constexpr qsizetype commandSize = 50;
  /// Registers 1 to 20 as they go over the wire.
  static constexpr std::array<unsigned, 20> registers{0x002A, 0x0001, 0x0001, 0x0000, 0x004D, 0x003D, 0x0053,
                                                      0x0180, 0x0102, 0x7FFE, 0x1F41, 0x000D, 0x0015, 0x001F,
                                                      0xFFF9, 0x002D, 0x0070, 0x004B, 0x0021, 0x0013};

  void receive() {
    received_ += pty_.readPending();
    while (received_.size() >= commandSize) {
      const QByteArray command = received_.first(commandSize);
      received_.remove(0, commandSize);
      take(command);
    }
  }

  void take(const QByteArray &padded) {
    const QByteArray zeros(commandSize, '\0');
    QByteArray command;
    QByteArray reply;
    int number = -1;
    if (padded == QByteArray("\xFF\x04\x90\xFE", 4) + zeros.first(46)) {
      number = 0;
      command = padded.first(4);
      reply = QByteArray("\xFF\x05\x90\x01\xFE", 5);
    } else if (const int named = padded[3];
               named >= 1 && named <= 20 &&
               padded == QByteArray("\xFF\x05\x91", 3) + padded[3] + '\xFE' + zeros.first(45)) {
      number = named;
      command = padded.first(5);
      const unsigned value = registers[static_cast<std::size_t>(named) - 1];
      reply = QByteArray("\xFF\x07\x91", 3) + padded[3] + static_cast<char>(value >> 8) +
              static_cast<char>(value & 0xFF) + '\xFE';
    }
    commands_.push_back(number);
    if (number < 0) return;
    deliveries_ += script_(command, reply);
    turn_.start();
  }

  void send() {
    // Asking whether the terminal's slave is readable also makes the kernel bring there what is on its way.
    pollfd unread{pty_.slave(), POLLIN, 0};
    if (::poll(&unread, 1, 0) != 0) return;
    if (deliveries_.isEmpty()) {
      turn_.stop();
      follows_ = false;
      return;
    }
    const auto now = std::chrono::steady_clock::now();
    if (follows_) longestGap_ = std::max(longestGap_, now - sentAt_);
    sentAt_ = now;
    pty_.write(deliveries_.takeFirst());
    follows_ = !deliveries_.isEmpty();
  }

  Pty pty_;
  Script script_;
  std::unique_ptr<QSocketNotifier> notifier_;
  QTimer turn_;
  QByteArray received_;
  QList<QByteArray> deliveries_;
  std::vector<int> commands_;
  bool follows_ = false;
  std::chrono::steady_clock::time_point sentAt_;
  std::chrono::steady_clock::duration longestGap_{};
};

}  // namespace tavril
