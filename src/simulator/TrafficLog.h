#pragma once

#include "simulator/Wire.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace tavril::simulator {

/// Turns traffic into lines: "-> " from the host, "<- " to it. A command's line tells how many bytes came
/// with the padding, so it is held back, and all lines after it too, until the delivery is over. Not
/// thread-safe.
class TrafficLog {
 public:
  void command(const Bytes &frame, const QString &words);
  /// Zeros that follow a command belong to its delivery, other bytes are told as stray.
  void padding();
  void stray(std::uint8_t byte);
  /// A line about bytes that came from the host and are not looked at any further.
  void fromHost(const QString &line);
  /// A line about bytes that went to the host.
  void toHost(const QString &line);
  /// Nothing more belongs to the line that is under way.
  void endLine();
  bool lineUnderWay() const { return kind_ != Kind::None; }

  /// The lines that are complete, oldest first; they are forgotten here.
  std::vector<QString> take();

 private:
  enum class Kind { None, Command, Stray };

  Kind kind_ = Kind::None;
  QString text_;
  Bytes strayBytes_;
  int byteCount_ = 0;
  std::vector<QString> complete_;
  std::vector<QString> held_;
};

}  // namespace tavril::simulator
