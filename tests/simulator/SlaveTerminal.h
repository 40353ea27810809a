#pragma once

#include "simulator/FileDescriptor.h"
#include "simulator/Wire.h"

#include <QFile>
#include <QString>

#include <algorithm>
#include <array>
#include <cerrno>
#include <chrono>

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

namespace tavril::simulator {

/// The host's end of the line: a terminal opened as any program would open it.
class SlaveTerminal {
 public:
  explicit SlaveTerminal(const QString &path)
      : terminal_(::open(QFile::encodeName(path).constData(), O_RDWR | O_NOCTTY | O_NONBLOCK | O_CLOEXEC)) {}

  bool isOpen() const { return terminal_.valid(); }
  int descriptor() const { return terminal_.get(); }

  bool write(const Bytes &bytes) const {
    return ::write(descriptor(), bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size());
  }
  /// Waits for room as often as it takes, though not for ever.
  bool writeAll(const Bytes &bytes) const {
    std::size_t written = 0;
    while (written < bytes.size()) {
      if (!waitFor(POLLOUT)) return false;
      const ssize_t taken = ::write(descriptor(), bytes.data() + written, bytes.size() - written);
      if (taken < 0 && errno != EAGAIN) return false;
      if (taken > 0) written += static_cast<std::size_t>(taken);
    }
    return true;
  }
  /// A frame with the zeros that fill it to 50 bytes.
  bool writeDelivery(Bytes frame) const {
    frame.resize(50, 0x00);
    return write(frame);
  }

  /// Waits until so many bytes are there, though not for ever; what came by then.
  Bytes read(std::size_t count) const {
    Bytes bytes;
    while (bytes.size() < count && waitFor(POLLIN)) {
      std::array<std::uint8_t, 256> buffer;
      const ssize_t got = ::read(descriptor(), buffer.data(), std::min(buffer.size(), count - bytes.size()));
      if (got <= 0) break;
      bytes.insert(bytes.end(), buffer.begin(), buffer.begin() + got);
    }
    return bytes;
  }
  /// Reads until these bytes have come at the end; false when they do not come.
  bool readUntil(const Bytes &end) const {
    Bytes bytes;
    while (bytes.size() < 100'000) {
      const Bytes more = read(1);
      if (more.empty()) return false;
      bytes.push_back(more.front());
      if (bytes.size() >= end.size() && std::equal(end.rbegin(), end.rend(), bytes.rbegin())) return true;
    }
    return false;
  }

  Bytes exchange(const Bytes &frame, std::size_t replySize) const {
    if (!writeDelivery(frame)) return {};
    return read(replySize);
  }

  /// Waits until the line is hung up, though not for ever.
  bool hungUp() const { return waitFor(0) && (lastEvents_ & POLLHUP) != 0; }

 private:
  bool waitFor(short events) const {
    pollfd waiting{descriptor(), events, 0};
    const int ready = ::poll(&waiting, 1, 60'000);
    lastEvents_ = waiting.revents;
    return ready > 0;
  }

  FileDescriptor terminal_;
  mutable short lastEvents_ = 0;
};

}  // namespace tavril::simulator
