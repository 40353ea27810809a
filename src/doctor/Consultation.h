#pragma once

#include "doctor/Examination.h"

#include <functional>
#include <memory>

namespace tavril {
class Background;
class MainQueue;
}  // namespace tavril

namespace tavril::doctor {

/// An examination on a thread of its own. The listener is called on the main thread, and no more once the
/// consultation has been stopped. Main thread only.
class Consultation {
 public:
  /// `ended` is called after all results.
  Consultation(const Surroundings &surroundings, const Request &request, Background &background,
               MainQueue &mainQueue, Listener listener, std::function<void()> ended);
  ~Consultation();
  Consultation(const Consultation &) = delete;
  Consultation &operator=(const Consultation &) = delete;

  /// Ends the examination and waits until it has let go of the port, which is a matter of milliseconds.
  void stop();

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace tavril::doctor
