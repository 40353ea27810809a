#pragma once

#include "simulator/Wire.h"

#include <cstdint>
#include <vector>

namespace tavril::simulator {

/// Something the parser has made up its mind about.
struct ParsedItem {
  enum class Kind {
    Frame,        ///< a whole frame, marks included
    Padding,      ///< a zero between frames
    Garbage,      ///< any other byte that begins no frame
    BrokenFrame,  ///< the start mark of what looked like a frame and had no end mark in its place
    TimedOut,     ///< all bytes of a frame that was never finished
  };
  Kind kind;
  Bytes bytes;
};

/// Cuts frames out of what the host sends, one byte at a time. Goes by the length byte, never by the marks
/// alone, because parameters may hold any byte; finds the next frame after garbage. Knows no time.
class FrameParser {
 public:
  std::vector<ParsedItem> feed(std::uint8_t byte);
  /// Gives up the frame that is under way; frames that stand whole in its remains are still found.
  std::vector<ParsedItem> timeOut();
  /// True while bytes are kept that may become a frame.
  bool pending() const { return !buffer_.empty(); }

 private:
  void scan(std::vector<ParsedItem> &items);
  void drop(ParsedItem::Kind kind, std::vector<ParsedItem> &items);

  Bytes buffer_;
};

}  // namespace tavril::simulator
