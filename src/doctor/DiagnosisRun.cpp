#include "doctor/DiagnosisRun.h"

#include "platform/Background.h"
#include "platform/MainQueue.h"

#include <future>
#include <utility>

namespace tavril::doctor {

struct DiagnosisRun::State {
  State(const Services &services, const Request &request) : examination(services, request) {}

  Examination examination;
  Listener listener;
  std::function<void()> ended;
  std::promise<void> released;
  bool isStopped = false;  // main thread only
};

DiagnosisRun::DiagnosisRun(const Services &services, const Request &request, Background &background,
                           MainQueue &mainQueue, Listener listener, std::function<void()> ended)
    : state_(std::make_shared<State>(services, request)) {
  state_->listener = std::move(listener);
  state_->ended = std::move(ended);
  background.run([state = state_, &mainQueue] {
    const auto tell = [&](std::function<void(const State &)> what) {
      mainQueue.async([state, what = std::move(what)] {
        if (!state->isStopped) what(*state);
      });
    };
    state->examination.run(
        {[&](CheckId check) { tell([check](const State &told) { told.listener.began(check); }); },
         [&](const Result &result) { tell([result](const State &told) { told.listener.found(result); }); }});
    tell([](const State &told) { told.ended(); });
    state->released.set_value();
  });
}

DiagnosisRun::~DiagnosisRun() {
  stop();
}

void DiagnosisRun::stop() {
  if (state_->isStopped) return;
  state_->isStopped = true;
  state_->examination.cancel();
  state_->released.get_future().wait();
}

}  // namespace tavril::doctor
