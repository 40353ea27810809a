#pragma once

#include <QByteArray>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QString>
#include <QStringList>

#include <memory>
#include <vector>

namespace tavril::vm {

class Adapter;

/// The host's end of the line by which the programs in the virtual machine have adapters plugged in and
/// pulled out, look at the servos and tell what became of each test. One request a line, one answer a line:
/// "ok" and what was asked for, or "error" and why. Main thread only.
class Control {
 public:
  /// What became of one test in the machine.
  struct Result {
    QString name;
    bool passed = false;
    int milliseconds = 0;
  };

  explicit Control(std::vector<std::unique_ptr<Adapter>> &adapters);
  Control(const Control &) = delete;
  Control &operator=(const Control &) = delete;

  /// False when the machine does not listen at this socket within the time that its start may take.
  bool connectTo(const QString &socket);

  const std::vector<Result> &results() const { return results_; }
  /// True once the machine has said that all its tests are through.
  bool hasEnded() const { return ended_; }

 private:
  void receive();
  QString answer(const QStringList &words);
  QString act(Adapter &adapter, const QString &verb, const QStringList &values);
  QString setOption(Adapter &adapter, const QString &name, int value);

  std::vector<std::unique_ptr<Adapter>> &adapters_;
  QLocalSocket socket_;
  std::vector<Result> results_;
  QElapsedTimer sinceStart_;
  bool ended_ = false;
};

}  // namespace tavril::vm
