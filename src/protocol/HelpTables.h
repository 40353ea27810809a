#pragma once

namespace tavril {

class Log;
struct SharedState;

/// Fills `Key` and `Msg` of the shared state. Called once, before the main loop starts.
void buildHelpTables(SharedState &state, Log &log);

}  // namespace tavril
