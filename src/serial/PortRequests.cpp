#include "serial/PortRequests.h"

#include "platform/Background.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "serial/SerialPortDelegate.h"
#include "serial/SerialRequest.h"

#include <algorithm>
#include <chrono>
#include <deque>
#include <iterator>
#include <utility>

namespace tavril {

namespace {

using Seconds = std::chrono::duration<double>;

/// A time-out that no program lives to see, and that can be counted in nanoseconds.
constexpr Seconds longestTimeout = std::chrono::years(100);

std::chrono::nanoseconds inNanoseconds(Seconds seconds) {
  return std::chrono::duration_cast<std::chrono::nanoseconds>(std::min(seconds, longestTimeout));
}

}  // namespace

PortRequests::PortRequests(SerialPort &port, const SerialEnvironment &environment, Changed changed)
    : port_(port),
      environment_(environment),
      changed_(std::move(changed)),
      requestHandlingQueue_(environment.background.serialQueue(
          QStringLiteral("org.tavril.Tavril.SerialPort.requestHandlingQueue"))) {}

PortRequests::~PortRequests() {
  setPendingRequestTimeoutTimer(nullptr);
}

/// Jobs that wait do not keep the port alive; while one runs, port and requests are there.
template <typename Job>
void PortRequests::onQueue(Job job) {
  requestHandlingQueue_->async([weak = port_.weak_from_this(), job = std::move(job)] {
    if (const auto port = weak.lock()) job();
  });
}

template <typename Tell>
void PortRequests::onMainQueue(SerialPortCallback callback, Tell tell) {
  environment_.mainQueue.async([weak = port_.weak_from_this(), callback, tell = std::move(tell)] {
    if (const auto port = weak.lock()) tell(port, port->whoHears(callback));
  });
}

bool PortRequests::sendRequest(const Request &request) {
  if (!request) return false;
  if (requestHandlingQueue_->isCurrent()) {
    environment_.log.warn(
        QStringLiteral("*** Assertion failure: a request cannot be sent on the request queue of its port"));
    return false;
  }
  bool sent = false;
  requestHandlingQueue_->sync([&] { sent = reallySendRequest(request); });
  return sent;
}

void PortRequests::receive(const QByteArray &bytes) {
  {
    const std::lock_guard lock(mutex_);
    // Nobody waits for them, so that no thread need be woken. They are not to overtake others, though.
    if (!pendingRequest_ && deliveriesOnQueue_ == 0) {
      append(bytes);
      return;
    }
    ++deliveriesOnQueue_;
  }
  onQueue([this, bytes] {
    {
      const std::lock_guard lock(mutex_);
      --deliveriesOnQueue_;
      append(bytes);
    }
    checkResponseToPendingRequestAndContinueIfValid();
  });
}

void PortRequests::beginOpening() {
  const std::lock_guard lock(mutex_);
  ++opening_;
}

std::uint64_t PortRequests::opening() const {
  const std::lock_guard lock(mutex_);
  return opening_;
}

void PortRequests::forget(std::uint64_t opening) {
  onQueue([this, opening] {
    bool isPendingForgotten = false;
    std::deque<Waiting> forgotten;  // goes without the lock, as it may hold anything
    {
      const std::lock_guard lock(mutex_);
      isPendingForgotten = !pendingRequest_ || pendingOpening_ <= opening;
      // They wait in the order in which they were sent, and so in the order of the openings.
      const auto isKept = [opening](const Waiting &waiting) { return waiting.opening > opening; };
      const auto firstKept = std::ranges::find_if(requestsQueue_, isKept);
      std::move(requestsQueue_.begin(), firstKept, std::back_inserter(forgotten));
      requestsQueue_.erase(requestsQueue_.begin(), firstKept);
    }
    if (isPendingForgotten) {
      setPendingRequestTimeoutTimer(nullptr);
      setPendingRequest(nullptr);
      isTellingTimeout_ = false;
      ++turn_;
    }
    if (!forgotten.empty()) changed_(QStringLiteral("requestsQueue"), {});
    if (isPendingForgotten) sendNextRequest();
  });
}

// ------------------------------------------------------------------------------------------- on the queue

bool PortRequests::reallySendRequest(const Request &request) {
  if (pendingRequest()) {
    insertObjectInRequestsQueueAtIndex(request, countOfRequestsQueue());
    return true;
  }
  const bool sent = begin(request, opening());
  if (sent) checkResponseToPendingRequestAndContinueIfValid();
  return sent;
}

/// Makes the request the pending one and sends it. Kept: C55.
bool PortRequests::begin(const Request &request, std::uint64_t opening) {
  Request before = request;
  {
    const std::lock_guard lock(mutex_);
    receiveBuffer_.clear();
    pendingRequest_.swap(before);
    pendingOpening_ = opening;
  }
  ++turn_;
  if (request->timeoutInterval() > 0) armTimeout(request->timeoutInterval());
  return port_.sendData(request->dataToSend());
}

void PortRequests::armTimeout(double timeoutInterval_s) {
  const auto timeout = inNanoseconds(Seconds(timeoutInterval_s));
  const auto tick = [weak = port_.weak_from_this(), this] {
    if (const auto port = weak.lock()) pendingRequestDidTimeout();
  };
  setPendingRequestTimeoutTimer(requestHandlingQueue_->repeat(timeout, timeout / 10, tick));
}

/// Expects the lock.
void PortRequests::append(const QByteArray &bytes) {
  receiveBuffer_.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
  if (!pendingRequest_ && receiveBuffer_.size() > mostKeptWhileIdle) {
    receiveBuffer_.erase(0, receiveBuffer_.size() - mostKeptWhileIdle);
  }
}

// A response may be there as soon as a request is sent, and so on for any number of requests: a loop, where
// each step calling the next would use up the stack.
void PortRequests::checkResponseToPendingRequestAndContinueIfValid() {
  while (takeResponse()) {
    if (!beginNext()) return;
  }
}

/// True when what was received is a valid response to the pending request, which is then told.
bool PortRequests::takeResponse() {
  const Request request = pendingRequest();
  // What comes after the time is up, but before the delegate has heard of that, is no response any more.
  if (!request || isTellingTimeout_) return false;
  const QByteArray response = received();
  if (!request->dataIsValidResponse(response)) return false;
  setPendingRequestTimeoutTimer(nullptr);
  if (!response.isEmpty()) {  // Kept: C56.
    onMainQueue(SerialPortCallback::DidReceiveResponse,
                [response, request](const auto &port, const auto &delegate) {
                  if (delegate) delegate->didReceiveResponse(port, response, request);
                });
  }
  return true;
}

void PortRequests::sendNextRequest() {
  if (beginNext()) checkResponseToPendingRequestAndContinueIfValid();
}

/// Ends the pending request and begins the next. True when there is one and it was sent.
bool PortRequests::beginNext() {
  setPendingRequest(nullptr);
  isTellingTimeout_ = false;
  ++turn_;
  if (countOfRequestsQueue() == 0) return false;
  const Waiting next = objectInRequestsQueueAtIndex(0);
  removeObjectFromRequestsQueueAtIndex(0);
  return begin(next.request, next.opening);
}

void PortRequests::pendingRequestDidTimeout() {
  setPendingRequestTimeoutTimer(nullptr);
  const Request request = pendingRequest();
  if (!request || !port_.whoHears(SerialPortCallback::RequestDidTimeout)) {
    sendNextRequest();
    return;
  }
  isTellingTimeout_ = true;
  onMainQueue(SerialPortCallback::RequestDidTimeout,
              [this, request, turn = turn_](const auto &port, const auto &heardBy) {
                if (heardBy) heardBy->requestDidTimeout(port, request);
                onQueue([this, turn] {
                  // The port may have been closed meanwhile, and another request be pending by now.
                  if (turn == turn_) sendNextRequest();
                });
              });
}

// ------------------------------------------------------------------------------------------------- accessors

QByteArray PortRequests::received() const {
  const std::lock_guard lock(mutex_);
  return QByteArray::fromStdString(receiveBuffer_);
}

PortRequests::Request PortRequests::pendingRequest() const {
  const std::lock_guard lock(mutex_);
  return pendingRequest_;
}

void PortRequests::setPendingRequest(Request request) {
  const std::lock_guard lock(mutex_);
  pendingOpening_ = opening_;
  pendingRequest_.swap(request);  // the old one goes without the lock: it may hold anything
}

std::vector<PortRequests::Request> PortRequests::requestsQueue() const {
  const std::lock_guard lock(mutex_);
  std::vector<Request> requests;
  for (const Waiting &waiting : requestsQueue_) requests.push_back(waiting.request);
  return requests;
}

std::size_t PortRequests::countOfRequestsQueue() const {
  const std::lock_guard lock(mutex_);
  return requestsQueue_.size();
}

PortRequests::Waiting PortRequests::objectInRequestsQueueAtIndex(std::size_t index) const {
  const std::lock_guard lock(mutex_);
  return requestsQueue_.at(index);
}

void PortRequests::insertObjectInRequestsQueueAtIndex(const Request &request, std::size_t index) {
  {
    const std::lock_guard lock(mutex_);
    requestsQueue_.insert(requestsQueue_.begin() + static_cast<std::ptrdiff_t>(index),
                          Waiting{request, opening_});
  }
  changed_(QStringLiteral("requestsQueue"), {Change::Kind::Insertion, {index}});
}

void PortRequests::removeObjectFromRequestsQueueAtIndex(std::size_t index) {
  {
    const std::lock_guard lock(mutex_);
    requestsQueue_.erase(requestsQueue_.begin() + static_cast<std::ptrdiff_t>(index));
  }
  changed_(QStringLiteral("requestsQueue"), {Change::Kind::Removal, {index}});
}

void PortRequests::setPendingRequestTimeoutTimer(std::shared_ptr<RepeatingWork> timer) {
  pendingRequestTimeoutTimer_.swap(timer);
  if (timer) timer->cancel();
}

}  // namespace tavril
