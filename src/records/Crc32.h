#pragma once

#include <array>
#include <cstddef>
#include <cstdint>
#include <string_view>

namespace tavril::records {

/// The CRC-32 of zip and PNG.
inline std::uint32_t crc32(std::string_view bytes) {
  constexpr auto table = [] {
    std::array<std::uint32_t, 256> all{};
    for (std::size_t i = 0; i < all.size(); ++i) {
      auto value = static_cast<std::uint32_t>(i);
      for (int bit = 0; bit < 8; ++bit) value = (value >> 1) ^ ((value & 1) != 0 ? 0xEDB88320U : 0U);
      all[i] = value;
    }
    return all;
  }();
  std::uint32_t value = 0xFFFFFFFFU;
  for (const char byte : bytes) {
    value = (value >> 8) ^ table[(value ^ static_cast<unsigned char>(byte)) & 0xFFU];
  }
  return ~value;
}

}  // namespace tavril::records
