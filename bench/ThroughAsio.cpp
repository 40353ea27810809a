#include "bench/Answering.h"
#include "bench/Contender.h"

#include <array>
#include <boost/asio.hpp>

namespace tavril::bench {

namespace {

namespace asio = boost::asio;

class ThroughAsio final : public Contender {
 public:
  explicit ThroughAsio(const QString &path) : port_(context_, path.toStdString()) {
    port_.set_option(asio::serial_port::baud_rate(115200));
  }

  void run(int trips) override {
    left_ = trips;
    send();
    context_.restart();
    context_.run();
  }

 private:
  void send() {
    asio::async_write(port_, asio::buffer(command_),
                      [this](const boost::system::error_code &error, std::size_t) {
                        if (!error) receive();
                      });
  }
  void receive() {
    asio::async_read(port_, asio::buffer(reply_),
                     [this](const boost::system::error_code &error, std::size_t) {
                       if (!error && --left_ > 0) send();
                     });
  }

  asio::io_context context_;
  asio::serial_port port_;
  const std::array<char, Answering::commandSize> command_{};
  std::array<char, Answering::replySize> reply_{};
  int left_ = 0;
};

}  // namespace

std::unique_ptr<Contender> throughAsio(const QString &path) {
  return std::make_unique<ThroughAsio>(path);
}

}  // namespace tavril::bench
