#pragma once

#include "simulator/FileDescriptor.h"
#include "simulator/Wire.h"

#include <QString>

#include <atomic>
#include <chrono>
#include <functional>
#include <mutex>
#include <thread>

namespace tavril::simulator {

class FrameEndpoint;

/// Serves an endpoint on a pseudo-terminal, raw and without echo. Its thread sleeps until bytes come or
/// replies are due. Clients may come and go; a reply that nobody reads waits in the terminal for the next
/// client. A client that was killed leaves the terminal in exclusive mode; this is switched off when nobody
/// has the terminal open. Thread-safe, except that start(), stop() and unplug() belong to one thread.
class PtyServer {
 public:
  /// Between start() and stop(), use the endpoint only through withEndpoint().
  explicit PtyServer(FrameEndpoint &endpoint);
  ~PtyServer();
  PtyServer(const PtyServer &) = delete;
  PtyServer &operator=(const PtyServer &) = delete;

  /// Opens a terminal and starts the thread, unless it runs already. False with the reason in `error`.
  bool start(QString *error = nullptr);
  /// Ends the thread and closes the terminal. Must not be called from a callback.
  void stop();
  /// Pulls the plug: the same as stop(), and a client sees that the line is hung up. If it is called from a
  /// callback, it takes effect after that.
  void unplug();

  /// The terminal for clients to open, such as /dev/pts/5; empty before the first start().
  QString path() const;
  /// False before start() and after the plug was pulled.
  bool serving() const { return serving_; }

  /// Brings the endpoint up to the present time and runs `act`. The thread does not use the endpoint
  /// meanwhile.
  void withEndpoint(const std::function<void()> &act);

 private:
  bool openTerminal(QString *error);
  void serve();
  void catchUp();
  void advanceTo(std::chrono::steady_clock::time_point now);
  bool receive();
  bool sendAndLog();
  void send(const Bytes &bytes);
  void flushLog();
  void waitForWork() const;
  void giveBackIfLeft() const;
  void wake() const;

  FrameEndpoint &endpoint_;
  mutable std::mutex mutex_;
  std::chrono::steady_clock::time_point lastAdvance_;
  QString path_;
  std::chrono::nanoseconds waitTime_{0};
  FileDescriptor master_;
  FileDescriptor slave_;
  FileDescriptor wake_;
  /// Reports when somebody closes the terminal. Not valid if the system has no more of these descriptors.
  FileDescriptor closings_;
  std::atomic<bool> serving_{false};
  std::atomic<bool> stopping_{false};
  std::atomic<std::thread::id> serverThread_;
  std::thread thread_;
};

}  // namespace tavril::simulator
