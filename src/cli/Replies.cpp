#include "cli/Replies.h"

#include "platform/Bytes.h"

#include <cstddef>
#include <optional>
#include <utility>

namespace tavril::cli {

ReplyScan scanForReply(const wire::Command &command, const QByteArray &received) {
  ReplyScan scan;
  std::optional<ReplyScan> atError;
  const wire::Bytes bytes = asBytes(received);
  std::size_t at = 0;
  while (at < bytes.size()) {
    std::optional<wire::Reply> reply = wire::replyAt(bytes.subspan(at));
    if (!reply) {
      scan.noise.append(static_cast<char>(bytes[at]));
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

}  // namespace tavril::cli
