#pragma once

#include "simulator/FileDescriptor.h"
#include "simulator/FrameEndpoint.h"
#include "simulator/ServoModel.h"

#include <array>
#include <atomic>
#include <chrono>
#include <cstdint>
#include <deque>
#include <optional>
#include <span>
#include <thread>
#include <vector>

namespace tavril::vm {

/// An FTDI adapter with a virtual servo behind it, emulated within the machine down to its USB transfers, so
/// that single transfers can be made to fail, and the plug be pulled in the middle of a certain one. The
/// kernel meets it through its own USB/IP host controller (vhci-hcd). It works on a thread of its own; its
/// methods belong to the main thread.
class EmulatedAdapter {
 public:
  EmulatedAdapter() = default;
  ~EmulatedAdapter() { pullOut(); }
  EmulatedAdapter(const EmulatedAdapter &) = delete;
  EmulatedAdapter &operator=(const EmulatedAdapter &) = delete;

  /// False when the kernel does not take it.
  bool plugIn();
  void pullOut();

  /// So many of the next requests for the state of the control lines fail, as by a disturbance on the cable.
  void failLineStates(int count) { lineStatesToFail_ = count; }
  bool hasFailedAll() const { return lineStatesToFail_ == 0; }
  /// Requests for the state of the control lines get no answer any more.
  void holdLineStates() { holding_ = true; }
  /// One of them is waiting for its answer.
  bool isHolding() const { return held_; }
  /// The cable is cut when so many more control transfers of the driver have begun. That one fails, and so do
  /// those that follow, until the hub notices.
  void pullOutAtTransfer(int count) { transfersLeft_ = count; }
  /// Control transfers of the driver since this was made.
  int transfers() const { return transfers_; }

 private:
  using Bytes = std::vector<std::uint8_t>;
  struct Request;

  void serve();
  bool waitForRequest() const;
  bool readAll(std::span<std::uint8_t> bytes) const;
  bool submit(const Request &request);
  bool unlink(const Request &request);
  bool control(const Request &request);
  bool vendorControl(const Request &request);
  bool answer(std::uint32_t number, int status, std::size_t length, const Bytes &data = {});
  bool write(const Bytes &bytes) const;
  void toServo(const Bytes &bytes);
  bool deliver();

  simulator::FileDescriptor socket_;
  std::thread thread_;
  std::atomic<int> lineStatesToFail_ = 0;
  std::atomic<int> transfersLeft_ = 0;
  std::atomic<bool> holding_ = false;
  std::atomic<bool> held_ = false;
  std::atomic<int> transfers_ = 0;

  // The thread's own.
  simulator::ServoModel model_;
  simulator::FrameEndpoint endpoint_{model_, {}};
  std::deque<std::uint32_t> waitingReads_;
  std::deque<Bytes> toHost_;
  std::optional<std::chrono::steady_clock::time_point> noticed_;
};

}  // namespace tavril::vm
