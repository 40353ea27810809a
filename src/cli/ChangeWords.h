#pragma once

#include "servo/Changes.h"

#include <QString>
#include <QStringList>

#include <functional>
#include <vector>

namespace tavril::cli {

/// "kp: 440 -> 500"
QString changeInWords(const servo::Change &change);
/// "kp: not changed, it is 440 (the servo refused 500: value out of range (error 3))"
QString outcomeInWords(const servo::Change &change);
/// What may hurt when these settings are written, a sentence each.
QStringList dangersInWords(const servo::Settings &wanted, const servo::Settings &present);

/// Runs what makes these changes and prints them, so that a Failure that ends it also says of each change
/// what has become of it.
void reportingEach(const std::vector<servo::Change> &changes, const std::function<void()> &act);
/// Throws a Failure when not all of the changes were made.
void expectAllChanged(const std::vector<servo::Change> &changes);

}  // namespace tavril::cli
