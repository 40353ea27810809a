#pragma once

#include "cli/Line.h"

#include <QString>

#include <optional>

namespace tavril::cli {

struct Session;

/// Tells from positions and their times whether the servo has come to rest. Pure.
class RestWatch {
 public:
  /// The position must not change for so long; a count more or less is only the reading.
  static constexpr Line::Time restTime{500};

  /// True once the servo is at rest.
  bool saw(int position, Line::Time at);

 private:
  std::optional<int> position_;
  Line::Time since_{0};
};

/// The position in the text: a number, or degrees such as "90deg". Throws a Failure for a text that is
/// neither, or one out of range.
int positionFrom(const QString &text);

/// The commands; each throws a Failure when it fails.
void printPosition(Session &session, bool json);
void moveTo(Session &session, int position, bool wait, bool json);
/// Sets the goal to where the servo is, so that it goes no further.
void stopMoving(Session &session, bool json);

}  // namespace tavril::cli
