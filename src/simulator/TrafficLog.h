#pragma once

#include "simulator/Wire.h"

#include <QString>

#include <cstdint>
#include <vector>

namespace tavril::simulator {

/// Turns traffic into lines: "-> " from the host, "<- " to it. The line of a command has the number of bytes
/// with the padding. So it waits until the delivery is over, and so do all lines after it. Not thread-safe.
class TrafficLog {
 public:
  void command(const Bytes &frame, const QString &words);
  /// Zeros after a command belong to its delivery; other bytes are stray.
  void padding();
  void stray(std::uint8_t byte);
  /// A line about bytes of the host that are not parsed further.
  void fromHost(const QString &line);
  /// A line about bytes that went to the host.
  void toHost(const QString &line);
  /// Ends the current line.
  void endLine();
  bool lineUnderWay() const { return kind_ != Kind::None; }

  /// Takes the complete lines out, oldest first.
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
