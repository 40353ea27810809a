#include "tests/vm/host/Adapter.h"

#include <QByteArray>

#include <cstdint>
#include <span>

namespace tavril::vm {

namespace {

constexpr int connectTimeout_ms = 10'000;

}  // namespace

Adapter::Adapter(const QString &socket) : path_(socket) {
  pulling_.setSingleShot(true);
  due_.setSingleShot(true);
  due_.setTimerType(Qt::PreciseTimer);
  QObject::connect(&pulling_, &QTimer::timeout, &socket_, [this] { pullOut(); });
  QObject::connect(&due_, &QTimer::timeout, &socket_, [this] { work(); });
  QObject::connect(&socket_, &QLocalSocket::readyRead, &socket_, [this] { receive(); });
  clock_.start();
  renew();
}

bool Adapter::plugIn() {
  pulling_.stop();
  if (socket_.state() == QLocalSocket::ConnectedState) return true;
  work();
  framesBeforePlug_ = endpoint_->framesSeen();
  endpoint_->plugIn();
  socket_.connectToServer(path_);
  return socket_.waitForConnected(connectTimeout_ms);
}

void Adapter::pullOut() {
  pulling_.stop();
  endpoint_->options().unplugAfter = 0;
  socket_.abort();
}

void Adapter::pullOutAfter(int frames) {
  endpoint_->options().unplugAfter = endpoint_->framesSeen() - framesBeforePlug_ + frames;
}

void Adapter::send(const QByteArray &bytes) {
  socket_.write(bytes);
  socket_.flush();
}

void Adapter::renew() {
  model_ = std::make_unique<simulator::ServoModel>();
  endpoint_ = std::make_unique<simulator::FrameEndpoint>(*model_, simulator::Options{});
  framesBeforePlug_ = 0;
  bytesSeen_ = 0;
}

void Adapter::receive() {
  const QByteArray bytes = socket_.readAll();
  bytesSeen_ += bytes.size();
  endpoint_->receive(std::span(reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                               static_cast<std::size_t>(bytes.size())));
  work();
}

void Adapter::work() {
  endpoint_->advance(std::chrono::nanoseconds(clock_.nsecsElapsed()));
  clock_.restart();
  while (const auto delivery = endpoint_->takeDelivery()) {
    socket_.write(reinterpret_cast<const char *>(delivery->data()), static_cast<qint64>(delivery->size()));
  }
  socket_.flush();
  endpoint_->log().take();  // nobody reads it, and it must not grow
  if (endpoint_->unplugged()) {
    pullOut();
    return;
  }
  if (const auto next = endpoint_->timeToNextEvent()) {
    due_.start(std::chrono::ceil<std::chrono::milliseconds>(*next));
  }
}

}  // namespace tavril::vm
