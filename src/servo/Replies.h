#pragma once

#include "wire/Frames.h"

#include <cstdint>
#include <vector>

namespace tavril::servo {

/// What the bytes that came since a command was sent hold.
struct ReplyScan {
  wire::Reply reply = {};                 ///< the first answer to the command, or else the first error report
  std::vector<wire::Reply> foreign = {};  ///< whole replies before it, to other commands
  std::vector<std::uint8_t> noise = {};   ///< all else before it
  bool isErrorReport = false;

  bool found() const { return !reply.frame.empty(); }
};

/// Looks for the answer to the command: a reply of its code that names its register, if replies of this code
/// name one. An error report names no command; it stands in for the answer where there is none. Pure, so that
/// it can be asked on any thread, as often as bytes come.
ReplyScan scanForReply(const wire::Command &command, wire::Bytes received);

}  // namespace tavril::servo
