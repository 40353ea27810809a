#pragma once

#include "simulator/FrameEndpoint.h"
#include "simulator/ServoModel.h"

#include <QStringList>

#include <chrono>
#include <vector>

namespace tavril::simulator {

/// A bridge with its servo on the bench: time passes only when a test says so.
class EndpointBench {
 public:
  explicit EndpointBench(const Options &options = {}) : endpoint(servo, options) {}

  /// A frame as the host sends it: filled with zeros to 50 bytes.
  static Bytes delivery(Bytes frame) {
    frame.resize(50, 0x00);
    return frame;
  }

  /// All that is due to leave, one entry for each write.
  std::vector<Bytes> due() {
    std::vector<Bytes> deliveries;
    while (const std::optional<Bytes> bytes = endpoint.takeDelivery()) deliveries.push_back(*bytes);
    return deliveries;
  }

  /// Lets time pass from event to event and gathers what leaves, until nothing is left to happen.
  std::vector<Bytes> dueInTheEnd() {
    std::vector<Bytes> deliveries = due();
    while (const auto wait = endpoint.timeToNextEvent()) {
      endpoint.advance(*wait);
      for (Bytes &bytes : due()) deliveries.push_back(std::move(bytes));
    }
    return deliveries;
  }

  /// The replies at once, joined, to one command sent with its padding.
  Bytes exchange(const Bytes &frame) {
    endpoint.receive(delivery(frame));
    Bytes reply;
    for (const Bytes &part : due()) reply.insert(reply.end(), part.begin(), part.end());
    return reply;
  }

  QStringList logLines() {
    QStringList lines;
    for (const QString &line : endpoint.log().take()) lines += line;
    return lines;
  }

  ServoModel servo;
  FrameEndpoint endpoint;
};

}  // namespace tavril::simulator
