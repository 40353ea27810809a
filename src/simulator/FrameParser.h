#pragma once

#include "simulator/Wire.h"

#include <cstdint>
#include <vector>

namespace tavril::simulator {

/// Bytes that the parser has recognised.
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

/// Finds frames in what the host sends, one byte at a time. It uses the length byte, because parameters may
/// be equal to the marks. After garbage it finds the next frame. It has no clock.
class FrameParser {
 public:
  std::vector<ParsedItem> feed(std::uint8_t byte);
  /// Drops the frame that is not complete. Whole frames within its bytes are still found.
  std::vector<ParsedItem> timeOut();
  /// True while bytes are kept that may become a frame.
  bool pending() const { return !buffer_.empty(); }

 private:
  void scan(std::vector<ParsedItem> &items);
  void drop(ParsedItem::Kind kind, std::vector<ParsedItem> &items);

  Bytes buffer_;
};

}  // namespace tavril::simulator
