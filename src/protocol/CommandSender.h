#pragma once

namespace tavril {

/// Sends the command in the shared command buffer.
class CommandSender {
 public:
  virtual ~CommandSender() = default;

  /// Sends the whole buffer and clears it.
  virtual void SendCMDtoMCU() = 0;
};

}  // namespace tavril
