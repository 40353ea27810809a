#pragma once

#include <cstddef>
#include <cstdint>

/// What each fuzz target defines: takes any bytes, leaves nothing behind, returns 0. The name is libFuzzer's.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size);
