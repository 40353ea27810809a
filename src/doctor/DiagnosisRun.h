#pragma once

#include "doctor/Examination.h"

#include <functional>
#include <memory>

namespace tavril {
class Background;
class MainQueue;
}  // namespace tavril

namespace tavril::doctor {

/// An examination on a thread of its own. The listener is called on the main thread, and no longer after the
/// run was stopped.
class DiagnosisRun {
 public:
  /// `ended` is called after all results.
  DiagnosisRun(const Services &services, const Request &request, Background &background, MainQueue &mainQueue,
               Listener listener, std::function<void()> ended);
  ~DiagnosisRun();
  DiagnosisRun(const DiagnosisRun &) = delete;
  DiagnosisRun &operator=(const DiagnosisRun &) = delete;

  /// Ends the examination and waits until it has closed the port, which takes a few milliseconds.
  void stop();

 private:
  struct State;
  std::shared_ptr<State> state_;
};

}  // namespace tavril::doctor
