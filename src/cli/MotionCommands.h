#pragma once

#include <QString>

namespace tavril::cli {

struct Session;

/// The position in the text: a number, or degrees such as "90deg". Throws a Failure for a text that is
/// neither, or one out of range.
int positionFrom(const QString &text);

/// The commands; each throws a Failure when it fails.
void printPosition(Session &session, bool json);
void moveTo(Session &session, int position, bool wait, bool json);
/// Sets the goal to where the servo is, so that it goes no further.
void stopMoving(Session &session, bool json);

}  // namespace tavril::cli
