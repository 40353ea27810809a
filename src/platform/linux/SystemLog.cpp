#include "platform/linux/SystemLog.h"

#include "platform/linux/StreamLog.h"

#include <QStringList>

#include <algorithm>
#include <array>
#include <cerrno>
#include <utility>

#include <sys/socket.h>
#include <sys/time.h>
#include <unistd.h>

namespace tavril {

namespace {

constexpr int userFacility = 1 << 3;

/// How long the thread waits for room at the other end before it looks whether the log ends.
constexpr timeval longestSending{0, 50'000};

/// Not open if the system has none to give.
posix::Descriptor makeSocket() {
  posix::Descriptor made(::socket(AF_UNIX, SOCK_DGRAM | SOCK_CLOEXEC, 0));
  const bool isLimited =
      ::setsockopt(made.get(), SOL_SOCKET, SO_SNDTIMEO, &longestSending, sizeof longestSending) == 0;
  // A wait without an end would hold up the end of the program.
  return isLimited ? std::move(made) : posix::Descriptor();
}

QString lossText(std::size_t lost) {
  return QStringLiteral("Lines lost here: %1.").arg(lost);
}

}  // namespace

SystemLog::SystemLog(QByteArray identifier, const QByteArray &path)
    : identifier_(std::move(identifier)), process_(::getpid()), socket_(makeSocket()) {
  address_.sun_family = AF_UNIX;
  const auto length = std::min(static_cast<std::size_t>(path.size()), sizeof address_.sun_path - 1);
  std::copy_n(path.constData(), length, address_.sun_path);
  thread_ = std::thread([this] { run(); });
}

SystemLog::~SystemLog() {
  {
    const std::lock_guard lock(mutex_);
    isEnding_ = true;
  }
  changed_.notify_one();
  thread_.join();
}

void SystemLog::add(Severity severity, const QString &line) {
  const std::time_t now = std::time(nullptr);
  {
    const std::lock_guard lock(mutex_);
    if (waiting_.size() >= mostWaiting) {
      ++lost_;
      return;
    }
    waiting_.push_back({severity, now, line.left(longestLine), std::exchange(lost_, 0)});
  }
  changed_.notify_one();
}

void SystemLog::run() {
  std::size_t lost = 0;  // that nobody has been told of
  std::unique_lock lock(mutex_);
  for (;;) {
    changed_.wait(lock, [this] { return isEnding_ || !waiting_.empty(); });
    const bool isLast = waiting_.empty();
    Entry entry{Severity::Warning, std::time(nullptr), {}, lost_};
    if (!isLast) {
      entry = std::move(waiting_.front());
      waiting_.pop_front();
    }
    lock.unlock();
    lost += entry.lostBefore;
    if (lost > 0 && send({Severity::Warning, entry.time, lossText(lost), 0})) lost = 0;
    if (isLast) return;
    if (!send(entry)) ++lost;
    lock.lock();
  }
}

bool SystemLog::send(const Entry &entry) {
  bool isSent = true;
  // A message of its own for each line of the entry: some services take a line break for the end of a
  // message.
  for (const QString &text : StreamLog::printable(entry.line).split(u'\n')) {
    if (text.trimmed().isEmpty()) continue;
    isSent = send(message(entry.severity, entry.time, identifier_, process_, text)) && isSent;
  }
  return isSent;
}

bool SystemLog::send(const QByteArray &message) const {
  for (;;) {
    const bool isEnding = isEnding_;
    const ssize_t sent =
        ::sendto(socket_.get(), message.constData(), static_cast<std::size_t>(message.size()),
                 MSG_NOSIGNAL | (isEnding ? MSG_DONTWAIT : 0), reinterpret_cast<const sockaddr *>(&address_),
                 sizeof address_);
    if (sent >= 0) return true;
    const bool isFull = errno == EAGAIN || errno == EWOULDBLOCK;
    if (errno != EINTR && (!isFull || isEnding)) return false;
  }
}

QByteArray SystemLog::message(Severity severity, std::time_t time, const QByteArray &identifier,
                              pid_t process, const QString &text) {
  // Whatever the language of the program is.
  static constexpr std::array months{"Jan", "Feb", "Mar", "Apr", "May", "Jun",
                                     "Jul", "Aug", "Sep", "Oct", "Nov", "Dec"};
  std::tm local{};
  ::localtime_r(&time, &local);
  const QString head =
      QString::asprintf("<%d>%s %2d %02d:%02d:%02d ", userFacility + static_cast<int>(severity),
                        months[static_cast<std::size_t>(local.tm_mon)], local.tm_mday, local.tm_hour,
                        local.tm_min, local.tm_sec);
  return head.toLatin1() + identifier + '[' + QByteArray::number(process) + "]: " + text.toUtf8();
}

}  // namespace tavril
