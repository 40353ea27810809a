#include "servo/Replies.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace tavril::servo {

ReplyScan scanForReply(const wire::Command &command, wire::Bytes received) {
  ReplyScan scan;
  std::optional<ReplyScan> atError;
  std::size_t at = 0;
  while (at < received.size()) {
    std::optional<wire::Reply> reply = wire::replyAt(received.subspan(at));
    if (!reply) {
      scan.noise.push_back(received[at]);
      ++at;
      continue;
    }
    at += reply->frame.size();
    if (reply->answers(command)) {
      scan.reply = std::move(*reply);
      return scan;
    }
    if (reply->code() == wire::CommandCode::ErrorMessage && !atError) {
      atError = scan;
      atError->reply = *reply;
      atError->isErrorReport = true;
    }
    scan.foreign.push_back(std::move(*reply));
  }
  return atError ? *atError : scan;
}

}  // namespace tavril::servo
