#pragma once

namespace tavril {

/// Transmits the command that stands in the shared command buffer. Main thread only.
class CommandSender {
 public:
  virtual ~CommandSender() = default;

  /// Sends the whole buffer and clears it.
  virtual void SendCMDtoMCU() = 0;
};

}  // namespace tavril
