#include "simulator/FrameParser.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"

#include <algorithm>
#include <array>
#include <span>

// The virtual servo's parser: whatever the host sends, each byte comes out again, in its place and once, and
// what is called a frame is one.

namespace tavril::simulator {
namespace {

using Kind = ParsedItem::Kind;

/// What came out of the parser, to be held against what went in.
class Output {
 public:
  void take(const std::vector<ParsedItem> &items) {
    for (const ParsedItem &item : items) take(item);
  }
  void take(const ParsedItem &item) {
    mustHold(!item.bytes.empty(), "an item has bytes");
    switch (item.kind) {
      case Kind::Frame:
        checkFrame(item.bytes);
        frames_.push_back(item.bytes);
        break;
      case Kind::Padding:
        mustHold(item.bytes == Bytes{0}, "padding is a zero");
        break;
      case Kind::Garbage:
      case Kind::BrokenFrame:
        mustHold(item.bytes.size() == 1, "one byte is dropped at a time");
        break;
      case Kind::TimedOut:
        break;
    }
    bytes_.insert(bytes_.end(), item.bytes.begin(), item.bytes.end());
  }
  const Bytes &bytes() const { return bytes_; }
  const std::vector<Bytes> &frames() const { return frames_; }

 private:
  static void checkFrame(const Bytes &frame) {
    mustHold(frame.size() >= 4 && frame.size() <= 50, "a frame has 4 to 50 bytes");
    mustHold(frame.front() == 0xFF && frame[1] == frame.size() && frame.back() == 0xFE,
             "a frame has its marks and its length");
  }

  Bytes bytes_;
  std::vector<Bytes> frames_;
};

void parseInOneGo(std::span<const std::uint8_t> input) {
  FrameParser parser;
  Output output;
  for (const std::uint8_t byte : input) output.take(parser.feed(byte));
  const std::size_t told = output.bytes().size();
  mustHold(told <= input.size() && input.size() - told < 50, "less than a frame is kept back");
  mustHold(std::equal(output.bytes().begin(), output.bytes().end(), input.begin()),
           "every byte comes out once and in order");
  mustHold(parser.pending() == (told < input.size()), "pending says whether bytes are kept");

  const Bytes kept(input.begin() + static_cast<std::ptrdiff_t>(told), input.end());
  const std::vector<ParsedItem> late = parser.timeOut();
  mustHold(!parser.pending(), "nothing is kept after the time-out");
  mustHold(late.empty() == kept.empty() && (late.empty() || late.front().bytes == kept),
           "the time-out tells all that was kept");
  Output remains;
  for (std::size_t i = 1; i < late.size(); ++i) {
    mustHold(late[i].kind == Kind::Frame, "only frames are told from the remains");
    remains.take(late[i]);
    mustHold(std::search(kept.begin(), kept.end(), late[i].bytes.begin(), late[i].bytes.end()) != kept.end(),
             "a frame of the remains stands in them");
  }
}

/// However the line was before, with a break on it the next frame is understood.
void findTheFrameAfterNoise(std::span<const std::uint8_t> input) {
  static const Bytes detection{0xFF, 0x04, 0x90, 0xFE};
  FrameParser parser;
  for (const std::uint8_t byte : input) parser.feed(byte);
  parser.timeOut();
  Output output;
  for (const std::uint8_t byte : detection) output.take(parser.feed(byte));
  mustHold(output.frames() == std::vector<Bytes>{detection}, "a frame after a pause is found whole");
}

}  // namespace
}  // namespace tavril::simulator

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  tavril::simulator::parseInOneGo({data, size});
  tavril::simulator::findTheFrameAfterNoise({data, size});
  return 0;
}
