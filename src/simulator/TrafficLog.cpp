#include "simulator/TrafficLog.h"

#include "simulator/FrameWords.h"

#include <utility>

namespace tavril::simulator {

void TrafficLog::command(const Bytes &frame, const QString &words) {
  endLine();
  kind_ = Kind::Command;
  text_ = inHex(frame) + QStringLiteral("  ") + words;
  byteCount_ = static_cast<int>(frame.size());
}

void TrafficLog::padding() {
  if (kind_ != Kind::Command) {
    stray(0);
  } else if (++byteCount_ >= wire::deliverySize) {
    endLine();
  }
}

void TrafficLog::stray(std::uint8_t byte) {
  if (kind_ != Kind::Stray) {
    endLine();
    kind_ = Kind::Stray;
  }
  strayBytes_.push_back(byte);
  if (strayBytes_.size() >= wire::deliverySize) endLine();
}

void TrafficLog::fromHost(const QString &line) {
  endLine();
  complete_.push_back(QStringLiteral("-> ") + line);
}

void TrafficLog::toHost(const QString &line) {
  (lineUnderWay() ? held_ : complete_).push_back(QStringLiteral("<- ") + line);
}

void TrafficLog::endLine() {
  if (kind_ == Kind::None) return;
  if (kind_ == Kind::Stray) {
    text_ = inHex(strayBytes_) + QStringLiteral("  stray");
    byteCount_ = static_cast<int>(strayBytes_.size());
    strayBytes_.clear();
  }
  complete_.push_back(QStringLiteral("-> %1  (%2 bytes)").arg(text_).arg(byteCount_));
  for (QString &line : held_) complete_.push_back(std::move(line));
  held_.clear();
  kind_ = Kind::None;
}

std::vector<QString> TrafficLog::take() {
  return std::exchange(complete_, {});
}

}  // namespace tavril::simulator
