#pragma once

#include "serial/DeliveryAssembler.h"
#include "serial/LineSession.h"
#include "terminal/TerminalCalls.h"

#include <QByteArray>

#include <memory>

namespace tavril {

class PortLine;
struct DeliveryRule;

/// Reads what comes in on a line, from the opening of its port to the closing, and hands it to the port in
/// deliveries. For the thread that runs it.
class ReadLoop {
 public:
  /// `rule`: none makes each read a delivery.
  ReadLoop(TerminalCalls &calls, std::weak_ptr<PortLine> line, std::shared_ptr<LineSession> session,
           std::shared_ptr<const DeliveryRule> rule);

  /// Returns when the session has ended, or the port is no more. What still waits for its rest then is
  /// dropped.
  void run();

 private:
  bool readOnce(PortLine &line);
  CallResult waitForInput(PortLine &line) const;
  bool deliverNext(PortLine &line, const BackpressureSlot &slot);
  void deliverFirstRead(PortLine &line, const BackpressureSlot &slot);
  void deliver(PortLine &line, const QByteArray &delivery, DeliveryAssembler::Time came,
               const BackpressureSlot &slot);

  TerminalCalls &calls_;
  std::weak_ptr<PortLine> line_;
  std::shared_ptr<LineSession> session_;
  std::shared_ptr<const DeliveryRule> rule_;
  DeliveryAssembler assembler_;
};

}  // namespace tavril
