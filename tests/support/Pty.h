#pragma once

#include <QByteArray>
#include <QString>

#include <array>
#include <chrono>
#include <cstdlib>
#include <stdexcept>

#include <fcntl.h>
#include <poll.h>
#include <termios.h>
#include <unistd.h>

namespace tavril {

/// A pseudo-terminal: the test holds the master, the program under test opens the slave by its path. Closing
/// the master hangs the slave up, as pulling the plug does.
class Pty {
 public:
  Pty() : master_(::posix_openpt(O_RDWR | O_NOCTTY | O_CLOEXEC)) {
    if (master_ < 0 || ::grantpt(master_) != 0 || ::unlockpt(master_) != 0) {
      throw std::runtime_error("no pseudo-terminal to be had");
    }
    std::array<char, 64> name{};
    ::ptsname_r(master_, name.data(), name.size());
    path_ = QString::fromLatin1(name.data());
    slave_ = ::open(name.data(), O_RDWR | O_NOCTTY | O_CLOEXEC);
    termios attributes{};
    ::tcgetattr(slave_, &attributes);
    cfmakeraw(&attributes);
    ::tcsetattr(slave_, TCSANOW, &attributes);
  }
  ~Pty() {
    unplug();
    ::close(slave_);
  }
  Pty(const Pty &) = delete;
  Pty &operator=(const Pty &) = delete;

  QString path() const { return path_; }
  int master() const { return master_; }
  /// A descriptor of the slave that keeps the terminal alive while nobody else has it open.
  int slave() const { return slave_; }

  void unplug() {
    if (master_ >= 0) ::close(master_);
    master_ = -1;
  }

  void write(const QByteArray &bytes) const {
    if (::write(master_, bytes.constData(), static_cast<std::size_t>(bytes.size())) != bytes.size()) {
      throw std::runtime_error("the pseudo-terminal did not take the bytes");
    }
  }

  /// Waits for so many bytes; fewer when they do not come in time.
  QByteArray read(qsizetype count, std::chrono::milliseconds patience = std::chrono::seconds(20)) const {
    QByteArray bytes;
    pollfd watched{master_, POLLIN, 0};
    while (bytes.size() < count && ::poll(&watched, 1, static_cast<int>(patience.count())) > 0) {
      std::array<char, 1024> buffer{};
      const auto wanted =
          std::min<std::size_t>(buffer.size(), static_cast<std::size_t>(count - bytes.size()));
      const ssize_t got = ::read(master_, buffer.data(), wanted);
      if (got <= 0) break;
      bytes.append(buffer.data(), got);
    }
    return bytes;
  }

  /// What has come by now.
  QByteArray readPending() const { return read(1 << 20, std::chrono::milliseconds(0)); }

  termios attributes() const {
    termios attributes{};
    ::tcgetattr(slave_, &attributes);
    return attributes;
  }

 private:
  int master_;
  int slave_ = -1;
  QString path_;
};

}  // namespace tavril
