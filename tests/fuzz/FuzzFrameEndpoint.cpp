#include "simulator/FrameEndpoint.h"
#include "simulator/ServoModel.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"

#include <set>

// The virtual servo behind its bridge, with any faults switched on: takes any bytes at any times. Without
// faults in the replies all that it sends are whole frames with known codes, and its settings stay readable
// and unchanged by anything but a command that may change them.
//
// Input: three bytes of options, then steps: a number below 200 and so many bytes from the host, or a number
// from 200 on for a pause of so many milliseconds above 200.

namespace tavril::simulator {
namespace {

using namespace std::chrono_literals;

Options optionsFrom(FuzzInput &input) {
  Options options;
  const std::uint8_t switches = input.byte();
  options.mute = (switches & 1) != 0;
  options.glue = (switches & 2) != 0;
  options.noise = (switches & 4) != 0;
  options.wrongLength = (switches & 8) != 0;
  options.lateEnds = (switches & 16) != 0;
  options.pace = (switches & 32) != 0;
  if ((switches & 64) != 0) options.readError = 3;
  const std::uint8_t more = input.byte();
  options.servos = static_cast<Options::Servos>(more % 3);
  options.splitSize = more / 16;
  options.unplugAfter = input.byte();
  return options;
}

class Bridge {
 public:
  explicit Bridge(FuzzInput &input) : options_(optionsFrom(input)) {}

  void run(FuzzInput &input) {
    // More would teach nothing new and only take longer.
    for (int steps = 0; steps < 64 && !input.isEmpty(); ++steps) {
      const std::uint8_t step = input.byte();
      if (step < 200) {
        const QByteArray bytes = input.bytes(step);
        received_ += static_cast<std::size_t>(bytes.size());
        endpoint_.receive({reinterpret_cast<const std::uint8_t *>(bytes.constData()),
                           static_cast<std::size_t>(bytes.size())});
        takeReplies();
      } else {
        pass(std::chrono::milliseconds(step - 200));
      }
    }
    // Everything under way comes to its end, and does so in finite time.
    for (int turn = 0; endpoint_.timeToNextEvent(); ++turn) {
      mustHold(turn < 100'000, "the bridge comes to rest");
      pass(std::chrono::ceil<std::chrono::milliseconds>(*endpoint_.timeToNextEvent()) + 1ms);
      // Nothing leaves any more, so what waits does so for ever.
      if (endpoint_.unplugged()) break;
    }
    checkServo();
  }

 private:
  void pass(std::chrono::milliseconds time) {
    endpoint_.advance(time);
    takeReplies();
  }
  void takeReplies() {
    while (const auto delivery = endpoint_.takeDelivery()) {
      mustHold(!options_.mute, "a mute bridge sends nothing");
      mustHold(!delivery->empty(), "a delivery has bytes");
      sent_ += delivery->size();
      const bool whole =
          !options_.noise && !options_.wrongLength && !options_.lateEnds && options_.splitSize == 0;
      if (whole) checkFrames(*delivery);
    }
    endpoint_.log().take();
    // A command has at least four bytes and its answer at most seven; noise adds some.
    mustHold(options_.noise || sent_ <= received_ * 8 + 64, "no more answers than commands");
  }
  static void checkFrames(const Bytes &bytes) {
    static const std::set<std::uint8_t> codes{0x90, 0x91, 0x92, 0x93, 0x94, 0x95, 0x96, 0x97, 0xF9};
    for (std::size_t at = 0; at < bytes.size();) {
      mustHold(at + 4 <= bytes.size() && bytes[at] == 0xFF, "an answer begins with its mark");
      const std::size_t length = bytes[at + 1];
      mustHold(length >= 4 && at + length <= bytes.size() && bytes[at + length - 1] == 0xFE,
               "an answer has its length and its end mark");
      mustHold(codes.contains(bytes[at + 2]), "an answer has a known code");
      at += length;
    }
  }
  void checkServo() {
    for (int number = 1; number <= 20; ++number) {
      mustHold(model_.read(number).has_value(), "all twenty registers can be read");
    }
    for (const int number : {0, 21, 255}) {
      mustHold(!model_.read(number), "there are no other registers");
    }
    mustHold(model_.position() >= 0 && model_.position() <= 1023, "the shaft stays within its travel");
    for (int number = 1; number <= 15; ++number) {
      const std::uint16_t value = *model_.read(number);
      mustHold(model_.write(number, value), "a setting can be written back as it was read");
      mustHold(model_.read(number) == value, "and then reads as before");
    }
  }

  Options options_;
  ServoModel model_;
  FrameEndpoint endpoint_{model_, options_};
  std::size_t received_ = 0;
  std::size_t sent_ = 0;
};

}  // namespace
}  // namespace tavril::simulator

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  tavril::FuzzInput input(data, size);
  tavril::simulator::Bridge(input).run(input);
  return 0;
}
