#pragma once

#include <QByteArray>
#include <QFile>
#include <QString>
#include <QStringList>

#include <chrono>
#include <vector>

namespace tavril::vm {

/// The machine's end of the line to the host: has adapters plugged in and pulled out, and looks at the servos
/// behind them. A request that the host does not carry out fails the test. Main thread only.
class HostControl {
 public:
  /// False when the machine has no such line.
  bool open();

  void plugIn(int adapter) { ask(QStringLiteral("plug %1").arg(adapter)); }
  void pullOut(int adapter) { ask(QStringLiteral("unplug %1").arg(adapter)); }
  /// Later, while the caller does something else.
  void pullOutIn(int adapter, std::chrono::milliseconds delay) {
    ask(QStringLiteral("unplug-in %1 %2").arg(adapter).arg(delay.count()));
  }
  /// When so many more frames have reached the servo.
  void pullOutAfter(int adapter, int frames) {
    ask(QStringLiteral("unplug-after %1 %2").arg(adapter).arg(frames));
  }
  void renewServo(int adapter) { ask(QStringLiteral("renew %1").arg(adapter)); }
  /// Bytes on the line that no servo sent.
  void send(int adapter, const QByteArray &bytes) {
    ask(QStringLiteral("send %1 %2").arg(adapter).arg(QString::fromLatin1(bytes.toHex())));
  }
  /// "mute", "servos" or "delay", as in the options of the virtual servo.
  void setOption(int adapter, const QString &name, int value) {
    ask(QStringLiteral("option %1 %2 %3").arg(adapter).arg(name).arg(value));
  }

  /// Registers 1 to 15 as the servo has them.
  std::vector<int> settings(int adapter);
  int framesSeen(int adapter) { return ask(QStringLiteral("frames %1").arg(adapter)).value(0).toInt(); }
  int position(int adapter) { return ask(QStringLiteral("position %1").arg(adapter)).value(0).toInt(); }

  void tellBegin() { ask(QStringLiteral("begin")); }
  void tellResult(const QString &test, bool passed, std::chrono::milliseconds took);
  void tellEnd() { ask(QStringLiteral("end")); }

 private:
  QStringList ask(const QString &request);

  QFile line_;
};

}  // namespace tavril::vm
