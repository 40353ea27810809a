#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/LinkUnderFuzz.h"

#include <cstring>

// Whatever the port delivers: what is no whole frame changes nothing, at most one command answers a delivery,
// and each command is well formed and filled up with zeros.
//
// Input: steps. A number below 240 is the size of a delivery, whose bytes follow; 240 to 247 begin or end a
// drag of the dial; 248 and above give up the connection or take it up again.

namespace tavril {
namespace {

constexpr std::uint8_t firstDragStep = 240;
constexpr std::uint8_t firstCancelStep = 248;

std::uint8_t at(const QByteArray &bytes, qsizetype index) {
  return static_cast<std::uint8_t>(bytes[index]);
}

bool isWholeFrame(const QByteArray &bytes) {
  return bytes.size() >= 2 && at(bytes, 0) == 0xFF && at(bytes, 1) == bytes.size() &&
         at(bytes, bytes.size() - 1) == 0xFE;
}

void checkCommand(const QByteArray &command) {
  mustHold(command.size() == 50, "a transmission has 50 bytes");
  const qsizetype length = at(command, 1);
  mustHold(at(command, 0) == 0xFF && length >= 4 && length <= 7 && at(command, length - 1) == 0xFE,
           "a command is a whole frame");
  mustHold(command.sliced(length) == QByteArray(50 - length, '\0'), "zeros follow the command");
}

void checkDelivery(LinkUnderFuzz &link, const QByteArray &bytes) {
  const bool givenUp = !link.state.CancelConnectFlag.isEmpty();
  const bool begins = !bytes.isEmpty() && at(bytes, 0) == 0xFF;
  const bool whole = isWholeFrame(bytes);
  auto before = link.everything();
  const std::size_t alerts = link.fakes.alert.contents.size();
  link.sent.clear();
  link.deliver(bytes);
  auto after = link.everything();

  mustHold(link.sent.size() <= 1, "at most one command answers a delivery");
  for (const QByteArray &command : link.sent) checkCommand(command);
  mustHold(link.state.SerialCMD == wire::CommandBuffer{}, "the command buffer is left empty");
  mustHold(link.fakes.alert.contents.size() <= alerts + 1, "at most one alert answers a delivery");
  if (!whole || givenUp) {
    mustHold(link.sent.size() == (begins && !givenUp ? 1u : 0u), "only a start mark begins the reading anew");
    if (!link.sent.empty()) {
      mustHold(at(link.sent[0], 2) == 0x91 && at(link.sent[0], 3) == 1, "and it begins at register 1");
      after[QStringLiteral("TXcmd")] = before[QStringLiteral("TXcmd")];
    }
    mustHold(before == after, "what is no whole frame changes nothing");
    mustHold(link.fakes.alert.contents.size() == alerts, "and raises no alert");
  } else {
    // Each byte twice, in decimal and in hexadecimal.
    const QStringList words = link.textOf(QStringLiteral("RXcmd")).split(u' ');
    mustHold(words.size() == 1 + 2 * bytes.size() && words[0] == u"RX:", "the frame is shown byte by byte");
    for (qsizetype i = 0; i < bytes.size(); ++i) {
      mustHold(words[1 + i].toInt() == at(bytes, i), "in decimal");
      mustHold(words[1 + bytes.size() + i].toInt(nullptr, 16) == at(bytes, i), "and in hexadecimal");
    }
    if (bytes.size() == 6 && at(bytes, 2) == 0x97) {
      mustHold(link.state.returnSTR.toInt() == at(bytes, 3) * 256 + at(bytes, 4), "a position is kept");
    }
  }
}

}  // namespace
}  // namespace tavril

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  LinkUnderFuzz link;
  FuzzInput input(data, size);
  // More would teach nothing new and only take longer.
  for (int steps = 0; steps < 24 && !input.isEmpty(); ++steps) {
    const std::uint8_t step = input.byte();
    if (step < firstDragStep) {
      checkDelivery(link, input.bytes(step));
    } else if (step < firstCancelStep) {
      link.state.limitFlag = link.state.limitFlag.isEmpty() ? QStringLiteral("MouseIn") : QString();
    } else {
      auto &flag = link.state.CancelConnectFlag;
      flag = flag.isEmpty() ? QStringLiteral("disconnect") : QString();
    }
  }
  return 0;
}
