#pragma once

namespace tavril {

/// Brings what has changed in the visible windows to the user's eyes, without letting anything else happen:
/// no input, timer or job is handled. Main thread of a program with windows; without any it does nothing.
void paintPendingWidgets();

}  // namespace tavril
