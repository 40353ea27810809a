#pragma once

#include "simulator/Wire.h"

#include <QString>

#include <cstdint>
#include <span>

/// Frames in hex and in words, for the log.
namespace tavril::simulator {

/// "FF 05 91 01 FE".
QString inHex(std::span<const std::uint8_t> bytes);
/// What the host asks for, such as "read register 1". The frame must be whole.
QString commandInWords(const Bytes &frame);
/// What the bridge answers, such as "register 1 is 42". The frame must be whole.
QString replyInWords(const Bytes &frame);

}  // namespace tavril::simulator
