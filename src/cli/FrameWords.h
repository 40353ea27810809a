#pragma once

#include "wire/Frames.h"

#include <QString>

namespace tavril::cli {

/// "FF 05 91 08 FE"
QString inHex(wire::Bytes bytes);
/// The frame alone, without the zeros behind it.
QString inHex(const wire::Command &command);

/// What a command asks for: "read max_load".
QString commandInWords(const wire::Command &command);
/// What a reply says: "max_load is 300".
QString replyInWords(const wire::Reply &reply);
/// What an error report means: "value out of range (error 3)".
QString errorInWords(int error);

}  // namespace tavril::cli
