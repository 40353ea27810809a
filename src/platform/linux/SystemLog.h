#pragma once

#include "platform/Log.h"
#include "posix/Descriptor.h"

#include <QByteArray>
#include <QString>

#include <atomic>
#include <condition_variable>
#include <cstddef>
#include <ctime>
#include <deque>
#include <mutex>
#include <thread>

#include <sys/types.h>
#include <sys/un.h>

namespace tavril {

/// The log of the machine: each line becomes a message to the socket on which the syslog service listens,
/// warnings as such and all else as debug messages. Nobody waits for that service. A thread sends the lines;
/// those that find too many others waiting, or nobody who takes them, are counted, and the next message that
/// goes out says how many they were. Thread-safe.
class SystemLog final : public Log {
 public:
  enum class Severity { Warning = 4, Debug = 7 };  ///< with the numbers that messages have for them

  /// More lines than this do not wait.
  static constexpr std::size_t mostWaiting = 1024;
  /// In characters; what a line has beyond that is not sent.
  static constexpr qsizetype longestLine = 4096;
  static constexpr const char *standardPath = "/dev/log";

  /// `identifier`: the name of the program. `path`: of the socket.
  explicit SystemLog(QByteArray identifier, const QByteArray &path = standardPath);
  /// Sends what waits, as far as it is taken at once.
  ~SystemLog() override;
  SystemLog(const SystemLog &) = delete;
  SystemLog &operator=(const SystemLog &) = delete;

  void write(const QString &line) override { add(Severity::Debug, line); }
  void warn(const QString &line) override { add(Severity::Warning, line); }

  /// A message as it is sent: priority, local time, identifier with process, and one line of text.
  static QByteArray message(Severity severity, std::time_t time, const QByteArray &identifier, pid_t process,
                            const QString &text);

 private:
  struct Entry {
    Severity severity;
    std::time_t time;
    QString line;
    std::size_t lostBefore;
  };

  void add(Severity severity, const QString &line);
  void run();
  bool send(const Entry &entry);
  bool send(const QByteArray &message) const;

  const QByteArray identifier_;
  const pid_t process_;
  sockaddr_un address_{};
  const posix::Descriptor socket_;
  std::atomic<bool> isEnding_ = false;
  std::mutex mutex_;
  std::condition_variable changed_;
  std::deque<Entry> waiting_;
  std::size_t lost_ = 0;  // of those that did not find room since the last that did
  std::thread thread_;    // the last, for it uses the others
};

}  // namespace tavril
