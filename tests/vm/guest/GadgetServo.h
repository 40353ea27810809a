#pragma once

#include "simulator/FileDescriptor.h"
#include "simulator/FrameEndpoint.h"
#include "simulator/ServoModel.h"

#include <memory>

class QSocketNotifier;

namespace tavril::vm {

/// A virtual servo behind an adapter of the CDC-ACM class, which the machine's own kernel plays (g_serial) on
/// a USB bus that exists in software only (dummy_hcd). Works on the main thread's event loop.
class GadgetServo {
 public:
  GadgetServo();
  ~GadgetServo();
  GadgetServo(const GadgetServo &) = delete;
  GadgetServo &operator=(const GadgetServo &) = delete;

  /// False when the kernel does not have it.
  bool plugIn();
  bool pullOut();

 private:
  void receive();

  simulator::ServoModel model_;
  simulator::FrameEndpoint endpoint_{model_, {}};
  simulator::FileDescriptor line_;
  std::unique_ptr<QSocketNotifier> notifier_;
};

}  // namespace tavril::vm
