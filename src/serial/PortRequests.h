#pragma once

#include "platform/KeyValueObservers.h"

#include <QByteArray>
#include <QString>

#include <cstddef>
#include <cstdint>
#include <deque>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

namespace tavril {

class RepeatingWork;
class SerialPort;
class SerialQueue;
class SerialRequest;
enum class SerialPortCallback;
struct SerialEnvironment;

/// The requests of one port: sends one at a time, collects what is received until the pending one accepts it
/// or its time is up, tells the port's delegate, and sends the next. All of it happens on a serial queue of
/// its own; what is public may be called on any thread.
class PortRequests {
 public:
  using Request = std::shared_ptr<SerialRequest>;
  using Changed = std::function<void(const QString &key, const Change &change)>;

  /// While no request is pending, no more than these latest bytes are kept: whatever comes of it, a line that
  /// nobody asks anything must not fill the memory.
  static constexpr std::size_t mostKeptWhileIdle = 64 * 1024;

  /// Belongs to the port, and is named by nothing that outlives it. `changed` tells observers, on the queue.
  PortRequests(SerialPort &port, const SerialEnvironment &environment, Changed changed);
  ~PortRequests();
  PortRequests(const PortRequests &) = delete;
  PortRequests &operator=(const PortRequests &) = delete;

  /// Waits for the queue. Called on the queue it could wait for ever: that is reported to the log, and
  /// refused.
  bool sendRequest(const Request &request);
  void receive(const QByteArray &bytes);
  /// The port has been opened: requests from now on are of a new opening.
  void beginOpening();
  /// Numbers the openings.
  std::uint64_t opening() const;
  /// Drops the requests of this opening and earlier ones, the pending one with its time-out. What was sent
  /// after a later opening stays, and its first is sent now if it had to wait for one that is dropped.
  void forget(std::uint64_t opening);

  Request pendingRequest() const;
  /// Only stores it: nothing is sent, and no time-out begins or ends.
  void setPendingRequest(Request request);
  std::vector<Request> requestsQueue() const;

 private:
  struct Waiting {
    Request request;
    std::uint64_t opening;
  };

  template <typename Job>
  void onQueue(Job job);
  template <typename Tell>
  void onMainQueue(SerialPortCallback callback, Tell tell);

  bool reallySendRequest(const Request &request);
  bool begin(const Request &request, std::uint64_t opening);
  void armTimeout(double timeoutInterval_s);
  void append(const QByteArray &bytes);
  void checkResponseToPendingRequestAndContinueIfValid();
  bool takeResponse();
  void sendNextRequest();
  bool beginNext();
  void pendingRequestDidTimeout();
  QByteArray received() const;
  std::size_t countOfRequestsQueue() const;
  Waiting objectInRequestsQueueAtIndex(std::size_t index) const;
  void insertObjectInRequestsQueueAtIndex(const Request &request, std::size_t index);
  void removeObjectFromRequestsQueueAtIndex(std::size_t index);
  void setPendingRequestTimeoutTimer(std::shared_ptr<RepeatingWork> timer);

  SerialPort &port_;
  const SerialEnvironment &environment_;
  const Changed changed_;
  const std::shared_ptr<SerialQueue> requestHandlingQueue_;

  /// Changed on the queue, under the lock since anybody may ask for a copy; what is received while no request
  /// is pending is added on any thread.
  mutable std::mutex mutex_;
  std::deque<Waiting> requestsQueue_;
  Request pendingRequest_;
  std::uint64_t pendingOpening_ = 0;
  std::uint64_t opening_ = 0;
  std::string receiveBuffer_;  // shares nothing: what is handed to other threads are copies
  std::size_t deliveriesOnQueue_ = 0;

  // The queue's own.
  std::shared_ptr<RepeatingWork> pendingRequestTimeoutTimer_;
  std::uint64_t turn_ = 0;         // counts up whenever a request begins or ends to be pending
  bool isTellingTimeout_ = false;  // the pending one has timed out, and the delegate has yet to hear of it
};

}  // namespace tavril
