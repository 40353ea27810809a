#pragma once

#include <QByteArray>
#include <QString>

namespace tavril::cli {

struct Command;

/// "FF 05 91 08 FE"
QString inHex(const QByteArray &bytes);

/// What a command asks for: "read register 8 (max_load)".
QString commandInWords(const Command &command);
/// What a whole, well-formed reply says: "max_load is 300".
QString replyInWords(const QByteArray &reply);
/// What an error report means: "value out of range (error 3)".
QString errorInWords(int error);

}  // namespace tavril::cli
