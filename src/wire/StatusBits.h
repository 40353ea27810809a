#pragma once

#include <array>
#include <string_view>

namespace tavril::wire {

/// A bit of a status register, and the key of its text.
struct StatusBit {
  int bit;
  std::u16string_view key;
  std::u16string_view keyIfShutDown{};  ///< the key if the torque policy is to shut down, where that matters

  constexpr int mask() const { return 1 << bit; }
  constexpr std::u16string_view keyFor(bool shutDownDisabled) const {
    return shutDownDisabled || keyIfShutDown.empty() ? key : keyIfShutDown;
  }
};

/// Of the status error byte. Bit 4 has no text.
inline constexpr std::array<StatusBit, 8> errorBits{{{0, u"StatusErrorMsg0"},
                                                     {1, u"StatusErrorMsg1"},
                                                     {2, u"StatusErrorMsg2"},
                                                     {3, u"StatusErrorMsg3"},
                                                     {4, u""},
                                                     {5, u"StatusErrorMsg5"},
                                                     {6, u"StatusErrorMsg6"},
                                                     {7, u"StatusErrorMsg7"}}};
/// Of the status detail byte. The lower bits are not looked at.
inline constexpr std::array<StatusBit, 4> detailBits{{{4, u"StatusDetailMsg4"},
                                                      {5, u"StatusDetailMsg5"},
                                                      {6, u"StatusDetailMsg60", u"StatusDetailMsg61"},
                                                      {7, u"StatusDetailMsg7"}}};

}  // namespace tavril::wire
