#include "tests/vm/guest/GadgetServo.h"

#include "tests/support/WaitFor.h"

#include <QProcess>
#include <QSocketNotifier>
#include <QStringList>

#include <array>
#include <span>

#include <fcntl.h>
#include <termios.h>
#include <unistd.h>

namespace tavril::vm {

namespace {

bool modprobe(const QStringList &arguments) {
  return QProcess::execute(QStringLiteral("/sbin/modprobe"), arguments) == 0;
}

}  // namespace

GadgetServo::GadgetServo() = default;

GadgetServo::~GadgetServo() {
  pullOut();
}

bool GadgetServo::plugIn() {
  if (!modprobe({QStringLiteral("dummy_hcd")}) || !modprobe({QStringLiteral("g_serial")})) return false;
  // The device's own end of the line.
  const bool opened = waitFor([this] {
    line_ = simulator::FileDescriptor(::open("/dev/ttyGS0", O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC));
    return line_.valid();
  });
  termios raw{};
  if (!opened || ::tcgetattr(line_.get(), &raw) != 0) return false;
  ::cfmakeraw(&raw);
  if (::tcsetattr(line_.get(), TCSANOW, &raw) != 0) return false;
  notifier_ = std::make_unique<QSocketNotifier>(line_.get(), QSocketNotifier::Read);
  QObject::connect(notifier_.get(), &QSocketNotifier::activated, notifier_.get(), [this] { receive(); });
  return true;
}

bool GadgetServo::pullOut() {
  if (!line_.valid()) return true;
  notifier_.reset();
  line_.reset();
  return modprobe({QStringLiteral("-r"), QStringLiteral("g_serial")});
}

void GadgetServo::receive() {
  std::array<std::uint8_t, 512> buffer{};
  const ssize_t count = ::read(line_.get(), buffer.data(), buffer.size());
  if (count <= 0) {
    // Nobody is at the other end any more.
    notifier_->setEnabled(false);
    return;
  }
  endpoint_.receive(std::span(buffer).first(static_cast<std::size_t>(count)));
  endpoint_.advance(std::chrono::milliseconds(1));
  while (const auto delivery = endpoint_.takeDelivery()) {
    if (::write(line_.get(), delivery->data(), delivery->size()) < 0) return;
  }
  endpoint_.log().take();
}

}  // namespace tavril::vm
