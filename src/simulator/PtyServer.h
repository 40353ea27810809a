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

/// Serves an endpoint on a pseudo-terminal, raw and without echo, on a thread of its own that sleeps until
/// bytes come or replies are due. Clients may come and go; a reply that nobody reads waits in the terminal
/// for the next one. A client that was killed has left the terminal in exclusive mode: once nobody has it
/// open, it is given back. Thread-safe, except that start(), stop() and unplug() are for one
/// thread.
class PtyServer {
 public:
  /// The endpoint must live as long as this; between start() and stop() touch it only through withEndpoint().
  explicit PtyServer(FrameEndpoint &endpoint);
  ~PtyServer();
  PtyServer(const PtyServer &) = delete;
  PtyServer &operator=(const PtyServer &) = delete;

  /// Opens a terminal and starts to serve; false with the reason in `error`. Does nothing when serving
  /// already.
  bool start(QString *error = nullptr);
  /// Ends serving and closes the terminal. Harmless when not serving; not for callbacks.
  void stop();
  /// Pulls the plug: the same, named for what a client sees: a line that is hung up. Called on the server's
  /// own thread (from a callback) it takes effect right after the callback.
  void unplug();

  /// The terminal for clients to open, such as /dev/pts/5; empty before the first start().
  QString path() const;
  /// False before start() and after the plug is pulled, by whomever.
  bool serving() const { return serving_; }

  /// Runs `act` while the thread keeps off the endpoint, after the endpoint's time has caught up.
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
  /// Tells when somebody closes the terminal; none where the system has no more of these.
  FileDescriptor closings_;
  std::atomic<bool> serving_{false};
  std::atomic<bool> stopping_{false};
  std::atomic<std::thread::id> serverThread_;
  std::thread thread_;
};

}  // namespace tavril::simulator
