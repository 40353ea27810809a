#include "tests/vm/guest/EmulatedAdapter.h"

#include <QByteArray>
#include <QFile>

#include <algorithm>
#include <cerrno>
#include <chrono>

#include <poll.h>
#include <sys/socket.h>
#include <unistd.h>

namespace tavril::vm {

namespace {

// What goes over a USB/IP connection: 48 bytes of big-endian words, then data in one direction.
constexpr std::size_t headerSize = 48;
constexpr std::uint32_t submitCommand = 1;
constexpr std::uint32_t unlinkCommand = 2;
constexpr std::uint32_t submitReply = 3;
constexpr std::uint32_t unlinkReply = 4;
constexpr std::uint32_t fullSpeed = 2;
constexpr std::chrono::milliseconds hubsDelay{100};
constexpr std::uint32_t deviceId = 0x00010002;

// Requests of the USB standard and of FTDI's chips.
constexpr std::uint8_t getDescriptor = 6;
constexpr std::uint8_t vendorKind = 0x40;
constexpr std::uint8_t fromDevice = 0x80;
constexpr std::uint8_t getLineState = 5;
constexpr std::uint8_t getLatency = 10;
/// CTS, DSR and DCD set; the transmitter is empty.
constexpr std::array<std::uint8_t, 2> lineState{0xB1, 0x60};

const std::vector<std::uint8_t> deviceDescriptor{18,   1,    0x00, 0x02, 0, 0, 0, 8, 0x03,
                                                 0x04, 0x01, 0x60, 0x00, 4, 1, 2, 3, 1};
const std::vector<std::uint8_t> configuration{9,  2, 32, 0,    1,    1,    0, 0x80, 45, 9,    4,
                                              0,  0, 2,  0xFF, 0xFF, 0xFF, 0, 7,    5,  0x81, 2,
                                              64, 0, 0,  7,    5,    0x02, 2, 64,   0,  0};

std::vector<std::uint8_t> stringDescriptor(int index) {
  if (index == 0) return {4, 3, 0x09, 0x04};
  const QByteArray text = index == 1 ? "Tests" : index == 2 ? "Emulated adapter" : "E1";
  std::vector<std::uint8_t> bytes{static_cast<std::uint8_t>(2 + 2 * text.size()), 3};
  for (const char letter : text) {
    bytes.push_back(static_cast<std::uint8_t>(letter));
    bytes.push_back(0);
  }
  return bytes;
}

void append(std::vector<std::uint8_t> &bytes, std::uint32_t word) {
  for (const int shift : {24, 16, 8, 0}) bytes.push_back(static_cast<std::uint8_t>(word >> shift));
}

}  // namespace

struct EmulatedAdapter::Request {
  std::array<std::uint8_t, headerSize> header{};
  Bytes data;

  std::uint32_t word(std::size_t index) const {
    std::uint32_t value = 0;
    for (std::size_t i = 0; i < 4; ++i) value = value << 8 | header[index * 4 + i];
    return value;
  }
  std::uint32_t command() const { return word(0); }
  std::uint32_t number() const { return word(1); }
  bool isInput() const { return word(3) == 1; }
  std::uint32_t endpoint() const { return word(4); }
  std::uint32_t unlinked() const { return word(5); }
  std::uint32_t length() const { return word(6); }
  std::uint8_t setup(std::size_t index) const { return header[40 + index]; }
};

bool EmulatedAdapter::plugIn() {
  pullOut();
  std::array<int, 2> ends{};
  if (::socketpair(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0, ends.data()) != 0) return false;
  socket_ = simulator::FileDescriptor(ends[0]);
  const simulator::FileDescriptor kernelsEnd(ends[1]);
  waitingReads_.clear();
  toHost_.clear();
  endpoint_.plugIn();
  transfersLeft_ = 0;
  noticed_.reset();
  thread_ = std::thread([this] { serve(); });
  QFile attach(QStringLiteral("/sys/devices/platform/vhci_hcd.0/attach"));
  const QString port = QStringLiteral("0 %1 %2 %3").arg(kernelsEnd.get()).arg(deviceId).arg(fullSpeed);
  return attach.open(QIODevice::WriteOnly | QIODevice::Unbuffered) && attach.write(port.toLatin1()) > 0;
}

void EmulatedAdapter::pullOut() {
  if (socket_.valid()) ::shutdown(socket_.get(), SHUT_RDWR);
  if (thread_.joinable()) thread_.join();
  socket_.reset();
}

void EmulatedAdapter::serve() {
  Request request;
  bool going = true;
  while (going && waitForRequest() && readAll(request.header)) {
    if (request.command() == submitCommand) {
      request.data.resize(request.isInput() ? 0 : request.length());
      going = readAll(request.data) && submit(request);
    } else {
      going = request.command() == unlinkCommand && unlink(request);
    }
  }
  ::shutdown(socket_.get(), SHUT_RDWR);
}

/// False when the time has come at which the hub notices that the cable is cut.
bool EmulatedAdapter::waitForRequest() const {
  pollfd watched{socket_.get(), POLLIN, 0};
  int timeout_ms = -1;
  if (noticed_) {
    const auto left =
        std::chrono::duration_cast<std::chrono::milliseconds>(*noticed_ - std::chrono::steady_clock::now());
    timeout_ms = std::max(0, static_cast<int>(left.count()));
  }
  return timeout_ms != 0 && ::poll(&watched, 1, timeout_ms) > 0;
}

bool EmulatedAdapter::readAll(std::span<std::uint8_t> bytes) const {
  while (!bytes.empty()) {
    const ssize_t got = ::read(socket_.get(), bytes.data(), bytes.size());
    if (got < 0 && errno == EINTR) continue;
    if (got <= 0) return false;
    bytes = bytes.subspan(static_cast<std::size_t>(got));
  }
  return true;
}

bool EmulatedAdapter::submit(const Request &request) {
  if (request.endpoint() == 0) return control(request);
  if (request.isInput()) {
    waitingReads_.push_back(request.number());
  } else {
    toServo(request.data);
    if (!answer(request.number(), 0, request.data.size())) return false;
  }
  return deliver();
}

bool EmulatedAdapter::unlink(const Request &request) {
  const bool waited = std::erase(waitingReads_, request.unlinked()) > 0;
  Bytes reply;
  for (const std::uint32_t word :
       {unlinkReply, request.number(), 0u, 0u, 0u, static_cast<std::uint32_t>(waited ? -ECONNRESET : 0)}) {
    append(reply, word);
  }
  reply.resize(headerSize);
  return write(reply);
}

bool EmulatedAdapter::control(const Request &request) {
  const std::uint8_t kind = request.setup(0);
  if ((kind & vendorKind) != 0) return vendorControl(request);
  Bytes data;
  if (kind == fromDevice && request.setup(1) == getDescriptor) {
    switch (request.setup(3)) {
      case 1:
        data = deviceDescriptor;
        break;
      case 2:
        data = configuration;
        break;
      case 3:
        data = stringDescriptor(request.setup(2));
        break;
      default:
        return answer(request.number(), -EPIPE, 0);
    }
  } else if (request.isInput()) {
    data.resize(request.length());
  }
  data.resize(std::min<std::size_t>(data.size(), request.length()));
  return answer(request.number(), 0, request.isInput() ? data.size() : request.length(), data);
}

bool EmulatedAdapter::vendorControl(const Request &request) {
  ++transfers_;
  if (transfersLeft_ > 0 && --transfersLeft_ == 0) noticed_ = std::chrono::steady_clock::now() + hubsDelay;
  // Until the hub has noticed, transfers fail one by one.
  if (noticed_) return answer(request.number(), -EPROTO, 0);
  if (!request.isInput()) return answer(request.number(), 0, request.length());
  if (request.setup(1) == getLineState && holding_) {
    held_ = true;
    return true;
  }
  if (request.setup(1) == getLineState && lineStatesToFail_ > 0) {
    --lineStatesToFail_;
    return answer(request.number(), -EPROTO, 0);
  }
  Bytes data(request.length());
  if (request.setup(1) == getLineState)
    std::copy_n(lineState.begin(), std::min(data.size(), lineState.size()), data.begin());
  if (request.setup(1) == getLatency && !data.empty()) data[0] = 16;
  return answer(request.number(), 0, data.size(), data);
}

bool EmulatedAdapter::answer(std::uint32_t number, int status, std::size_t length, const Bytes &data) {
  Bytes reply;
  for (const std::uint32_t word : {submitReply, number, 0u, 0u, 0u, static_cast<std::uint32_t>(status),
                                   static_cast<std::uint32_t>(length)}) {
    append(reply, word);
  }
  reply.resize(headerSize);
  reply.insert(reply.end(), data.begin(), data.end());
  return write(reply);
}

bool EmulatedAdapter::write(const Bytes &bytes) const {
  return ::send(socket_.get(), bytes.data(), bytes.size(), MSG_NOSIGNAL) ==
         static_cast<ssize_t>(bytes.size());
}

void EmulatedAdapter::toServo(const Bytes &bytes) {
  endpoint_.receive(bytes);
  endpoint_.advance(std::chrono::milliseconds(1));
  while (const auto delivery = endpoint_.takeDelivery()) toHost_.push_back(*delivery);
  endpoint_.log().take();
}

/// Each packet of such a chip begins with the state of the lines.
bool EmulatedAdapter::deliver() {
  while (!waitingReads_.empty() && !toHost_.empty()) {
    Bytes packet(lineState.begin(), lineState.end());
    packet.insert(packet.end(), toHost_.front().begin(), toHost_.front().end());
    const std::uint32_t number = waitingReads_.front();
    waitingReads_.pop_front();
    toHost_.pop_front();
    if (!answer(number, 0, packet.size(), packet)) return false;
  }
  return true;
}

}  // namespace tavril::vm
