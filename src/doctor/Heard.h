#pragma once

#include <QByteArray>

#include <optional>

namespace tavril::doctor {

/// What came back from a bridge that was asked whether there is a servo.
struct Heard {
  qsizetype bytes = 0;        ///< how many
  QByteArray beginning;       ///< the first of them
  qsizetype noise = 0;        ///< how many belong to no frame
  bool isFrame = false;       ///< there was at least one whole frame
  std::optional<int> servos;  ///< 0, 1, or 2 for several: as the last answer said
  std::optional<int> error;   ///< the last error report, where there was no answer

  static Heard in(const QByteArray &received);
  bool isAnswered() const { return servos.has_value(); }
};

}  // namespace tavril::doctor
