#include "simulator/VirtualServo.h"

namespace tavril::simulator {

VirtualServo::VirtualServo(const Options &options) : endpoint_(model_, options), server_(endpoint_) {}

void VirtualServo::withModel(const std::function<void(ServoModel &)> &act) {
  server_.withEndpoint([&] { act(model_); });
}

void VirtualServo::withOptions(const std::function<void(Options &)> &act) {
  server_.withEndpoint([&] { act(endpoint_.options()); });
}

}  // namespace tavril::simulator
