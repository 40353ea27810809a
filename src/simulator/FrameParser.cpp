#include "simulator/FrameParser.h"

#include <cstddef>
#include <utility>

namespace tavril::simulator {

std::vector<ParsedItem> FrameParser::feed(std::uint8_t byte) {
  std::vector<ParsedItem> items;
  buffer_.push_back(byte);
  scan(items);
  return items;
}

std::vector<ParsedItem> FrameParser::timeOut() {
  std::vector<ParsedItem> items;
  if (buffer_.empty()) return items;
  // A single start mark may be noise of the line.
  const bool begun = buffer_.size() > 1;
  items.push_back({begun ? ParsedItem::Kind::TimedOut : ParsedItem::Kind::Garbage, buffer_});
  std::vector<ParsedItem> remains;
  while (!buffer_.empty()) {
    drop(ParsedItem::Kind::Garbage, remains);
    scan(remains);
  }
  for (ParsedItem &item : remains) {
    if (item.kind == ParsedItem::Kind::Frame) items.push_back(std::move(item));
  }
  return items;
}

void FrameParser::scan(std::vector<ParsedItem> &items) {
  while (!buffer_.empty()) {
    if (buffer_[0] != wire::startMark) {
      drop(buffer_[0] == 0 ? ParsedItem::Kind::Padding : ParsedItem::Kind::Garbage, items);
      continue;
    }
    if (buffer_.size() < 2) return;
    const std::size_t length = buffer_[1];
    if (length < wire::shortestFrame || length > wire::longestFrame) {
      drop(ParsedItem::Kind::Garbage, items);
      continue;
    }
    if (buffer_.size() < length) return;
    if (buffer_[length - 1] != wire::endMark) {
      drop(ParsedItem::Kind::BrokenFrame, items);
      continue;
    }
    const auto end = buffer_.begin() + static_cast<std::ptrdiff_t>(length);
    items.push_back({ParsedItem::Kind::Frame, Bytes(buffer_.begin(), end)});
    buffer_.erase(buffer_.begin(), end);
  }
}

void FrameParser::drop(ParsedItem::Kind kind, std::vector<ParsedItem> &items) {
  items.push_back({kind, Bytes{buffer_.front()}});
  buffer_.erase(buffer_.begin());
}

}  // namespace tavril::simulator
