#pragma once

namespace tavril {

class StringTable;
struct SharedState;

/// How far the connection has come. It is connected as soon as the bridge has told which servos it found,
/// even if there is none.
enum class ConnectionState { NotConnected, Initialising, Connected };

/// Makes this the state, and says so in the connection line.
void showConnection(SharedState &state, ConnectionState connection, const StringTable &strings);

}  // namespace tavril
