// As the link does it: the delivery rule, a thread that reads, and a hop to the main thread, which sends.
#include "app/ReplyDelivery.h"
#include "bench/Answering.h"
#include "bench/BenchPorts.h"
#include "bench/Contender.h"
#include "serial/SerialPortDelegate.h"

#include <QEventLoop>

#include <stdexcept>

namespace tavril::bench {

namespace {

class Trips final : public SerialPortDelegate {
 public:
  bool respondsTo(SerialPortCallback callback) const override {
    return callback == SerialPortCallback::DidReceiveData;
  }
  void serialPortWasRemovedFromSystem(const Port &) override {}
  void didReceiveData(const Port &port, const QByteArray &bytes) override {
    got_ += bytes.size();
    if (got_ < qsizetype(Answering::replySize)) return;
    got_ = 0;
    if (--left_ == 0) {
      loop_.quit();
    } else {
      port->sendData(command_);
    }
  }
  void run(const Port &port, int trips) {
    left_ = trips;
    port->sendData(command_);
    loop_.exec();
  }

 private:
  const QByteArray command_{Answering::commandSize, '\0'};
  qsizetype got_ = 0;
  int left_ = 0;
  QEventLoop loop_;
};

class ThroughSerialPort final : public Contender {
 public:
  explicit ThroughSerialPort(const QString &path)
      : port_(ports_.port(QStringLiteral("usbport-bench"), path)) {
    port_->setDelegate(trips_);
    port_->setDeliveryRule(replyDeliveryRule());
    port_->setUsesLowLatency(true);
    port_->setBaudRate(115200);
    if (!port_->open()) throw std::runtime_error("the port cannot be opened");
  }
  ~ThroughSerialPort() override { port_->close(); }

  void run(int trips) override { trips_->run(port_, trips); }

 private:
  BenchPorts ports_;
  std::shared_ptr<SerialPort> port_;
  std::shared_ptr<Trips> trips_ = std::make_shared<Trips>();
};

}  // namespace

std::unique_ptr<Contender> throughSerialPort(const QString &path) {
  return std::make_unique<ThroughSerialPort>(path);
}

}  // namespace tavril::bench
