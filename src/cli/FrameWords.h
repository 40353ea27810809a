#pragma once

#include "wire/Frames.h"

#include <QString>

namespace tavril::servo {
struct Event;
}

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
/// What was sent or came: "-> FF 04 90 FE  detect the servo".
QString eventInWords(const servo::Event &event);

}  // namespace tavril::cli
