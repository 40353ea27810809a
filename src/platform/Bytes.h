#pragma once

#include <QByteArray>

#include <cstddef>
#include <cstdint>
#include <span>

namespace tavril {

/// The bytes of an array for the rooms that know no Qt; valid as long as the array is not changed.
inline std::span<const std::uint8_t> asBytes(const QByteArray &bytes) {
  return {reinterpret_cast<const std::uint8_t *>(bytes.constData()), static_cast<std::size_t>(bytes.size())};
}

inline QByteArray toByteArray(std::span<const std::uint8_t> bytes) {
  return {reinterpret_cast<const char *>(bytes.data()), static_cast<qsizetype>(bytes.size())};
}

}  // namespace tavril
