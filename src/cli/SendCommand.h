#pragma once

#include "wire/Frames.h"

#include <QStringList>

namespace tavril::cli {

struct Session;

/// The command whose frame these hexadecimal bytes are, checked like a command that this program makes
/// itself: marks, length, code, register and value. Throws a Failure that says what is wrong with it.
wire::Command commandFromHex(const QStringList &texts);

/// Throws a Failure for a reboot or a reset that was not confirmed.
void expectConfirmed(const wire::Command &command, bool isConfirmed);

/// Sends it and prints the reply with what it says. Throws a Failure when the bridge reports an error.
void sendCommand(Session &session, const wire::Command &command, bool json);

}  // namespace tavril::cli
