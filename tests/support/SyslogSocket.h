#pragma once

#include <QByteArray>
#include <QByteArrayList>
#include <QTemporaryDir>

#include <algorithm>
#include <array>
#include <chrono>
#include <stdexcept>
#include <utility>

#include <poll.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

namespace tavril {

/// A socket such as the syslog service has: in a folder of its own, or at the path where a machine of the
/// test's own has it. Everybody may write to it.
class SyslogSocket {
 public:
  SyslogSocket() : path_((folder_.path() + QStringLiteral("/log")).toLocal8Bit()) { open(); }
  explicit SyslogSocket(QByteArray path) : path_(std::move(path)) { open(); }
  ~SyslogSocket() { close(); }
  SyslogSocket(const SyslogSocket &) = delete;
  SyslogSocket &operator=(const SyslogSocket &) = delete;

  QByteArray path() const { return path_; }

  /// The service ends, and begins anew.
  void close() {
    if (socket_ >= 0) ::close(socket_);
    socket_ = -1;
    ::unlink(path_.constData());
  }
  void open() {
    socket_ = ::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0);
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::copy(path_.begin(), path_.end(), address.sun_path);
    if (::bind(socket_, reinterpret_cast<const sockaddr *>(&address), sizeof address) != 0) {
      throw std::runtime_error("no socket to be had");
    }
    ::chmod(path_.constData(), 0666);
  }

  /// The next message as it came; empty when none comes in time.
  QByteArray receive(std::chrono::milliseconds patience = std::chrono::seconds(20)) const {
    pollfd watched{socket_, POLLIN, 0};
    if (::poll(&watched, 1, static_cast<int>(patience.count())) <= 0) return {};
    std::array<char, 1 << 16> buffer{};
    const ssize_t size = ::recv(socket_, buffer.data(), buffer.size(), 0);
    return size < 0 ? QByteArray() : QByteArray(buffer.data(), static_cast<qsizetype>(size));
  }
  /// Its priority and text, without time and process: "<15>tavril: line".
  QByteArray receiveText() const { return withoutTime(receive()); }
  /// All that have come by now.
  QByteArrayList pendingTexts() const {
    QByteArrayList texts;
    for (;;) {
      const QByteArray message = receive(std::chrono::milliseconds(0));
      if (message.isEmpty()) return texts;
      texts.append(withoutTime(message));
    }
  }

 private:
  static QByteArray withoutTime(const QByteArray &message) {
    const qsizetype priorityEnd = message.indexOf('>') + 1;
    const qsizetype processBegin = message.indexOf('[');
    const qsizetype processEnd = message.indexOf(']') + 1;
    constexpr qsizetype timeLength = 16;  // "Nov 22 04:53:07 "
    if (processBegin < priorityEnd + timeLength || processEnd < processBegin) return message;
    return message.first(priorityEnd) +
           message.sliced(priorityEnd + timeLength, processBegin - priorityEnd - timeLength) +
           message.sliced(processEnd);
  }

  QTemporaryDir folder_;
  QByteArray path_;
  int socket_ = -1;
};

}  // namespace tavril
