#pragma once

#include "simulator/FrameEndpoint.h"
#include "simulator/ServoModel.h"

#include <QDeadlineTimer>
#include <QElapsedTimer>
#include <QLocalSocket>
#include <QString>
#include <QTimer>

#include <array>
#include <memory>

namespace tavril::vm {

/// A USB serial adapter of the virtual machine with a virtual servo behind it. The machine shows the adapter
/// on its USB bus for as long as this is connected to the adapter's socket. Main thread only.
class Adapter {
 public:
  explicit Adapter(const QString &socket);
  Adapter(const Adapter &) = delete;
  Adapter &operator=(const Adapter &) = delete;

  /// False when the machine does not take the connection.
  bool plugIn();
  void pullOut();
  /// Pulls the plug later, unless it has been pulled or put in before that.
  void pullOutIn(std::chrono::milliseconds delay) { pulling_.start(delay); }
  /// Pulls the plug when so many more frames have come; the last of them is not answered.
  void pullOutAfter(int frames);
  /// Sends bytes that no servo sent.
  void send(const QByteArray &bytes);

  /// A servo as it leaves the factory, and no faults.
  void renew();
  simulator::Options &options() { return endpoint_->options(); }
  simulator::ServoModel &servo() { return *model_; }
  /// Whole frames since renew().
  int framesSeen() const { return endpoint_->framesSeen(); }
  /// Bytes from the machine since renew().
  qint64 bytesSeen() const { return bytesSeen_; }

 private:
  void receive();
  void work();

  const QString path_;
  QLocalSocket socket_;
  QTimer pulling_;
  QTimer due_;
  QElapsedTimer clock_;
  std::unique_ptr<simulator::ServoModel> model_;
  std::unique_ptr<simulator::FrameEndpoint> endpoint_;
  int framesBeforePlug_ = 0;
  qint64 bytesSeen_ = 0;
};

}  // namespace tavril::vm
