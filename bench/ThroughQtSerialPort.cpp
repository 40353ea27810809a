#include "bench/Answering.h"
#include "bench/Contender.h"

#include <QEventLoop>
#include <QSerialPort>

#include <stdexcept>

namespace tavril::bench {

namespace {

class ThroughQtSerialPort final : public Contender {
 public:
  explicit ThroughQtSerialPort(const QString &path) {
    port_.setPortName(path);
    port_.setBaudRate(115200);
    if (!port_.open(QIODevice::ReadWrite)) throw std::runtime_error(qPrintable(port_.errorString()));
    QObject::connect(&port_, &QIODevice::readyRead, &port_, [this] { receive(); });
  }

  void run(int trips) override {
    left_ = trips;
    port_.write(command_);
    loop_.exec();
  }

 private:
  void receive() {
    got_ += port_.readAll().size();
    if (got_ < qsizetype(Answering::replySize)) return;
    got_ = 0;
    if (--left_ == 0) {
      loop_.quit();
    } else {
      port_.write(command_);
    }
  }

  const QByteArray command_{Answering::commandSize, '\0'};
  QSerialPort port_;
  qsizetype got_ = 0;
  int left_ = 0;
  QEventLoop loop_;
};

}  // namespace

std::unique_ptr<Contender> throughQtSerialPort(const QString &path) {
  return std::make_unique<ThroughQtSerialPort>(path);
}

}  // namespace tavril::bench
