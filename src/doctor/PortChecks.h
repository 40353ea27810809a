#pragma once

#include "doctor/Heard.h"
#include "doctor/Result.h"
#include "terminal/TerminalCalls.h"

#include <QString>

#include <chrono>

namespace tavril::doctor {

// What is said of the port that was opened, and of the bridge and the servo behind it. Pure.

Result checkOpening(const QString &path, const CallResult &opened);
Result checkLineSettings(const QString &path, const CallResult &taken);

/// How asking went, beside what was heard.
enum class Asked { Done, NotTaken, Gone };
/// `patience`: how long was listened in all.
Result checkReply(const QString &path, Asked asked, const Heard &heard, std::chrono::milliseconds patience);
Result checkFrame(const Heard &heard);
Result checkServo(const Heard &heard);

}  // namespace tavril::doctor
