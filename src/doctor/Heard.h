#pragma once

#include <QByteArray>

#include <optional>

namespace tavril::doctor {

/// What came back from a bridge that was asked whether there is a servo.
struct Heard {
  qsizetype bytes = 0;   ///< how many
  QByteArray beginning;  ///< the first of them
  /// How many belong to no frame. Neither the beginning of a frame at the end nor a greeting in letters
  /// before the first frame counts: they come from a bridge that is slow, not from a bad line.
  qsizetype noise = 0;
  bool isUnfinished = false;  ///< the beginning of a frame came last
  bool isFrame = false;       ///< there was at least one whole frame
  std::optional<int> servos;  ///< 0, 1, or 2 for several: as the last answer said
  std::optional<int> error;   ///< the last error report, where there was no answer

  static Heard in(const QByteArray &received);
  bool isAnswered() const { return servos.has_value(); }
};

}  // namespace tavril::doctor
