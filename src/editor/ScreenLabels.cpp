#include "editor/ScreenLabels.h"

#include "wire/Registers.h"

#include <array>

namespace tavril {

namespace {

constexpr std::array<QStringView, 3> titles{u"setting_list", u"motor_parameter", u"value_setting"};
constexpr std::array<QStringView, 8> others{u"motor_kx_90", u"position",     u"relax", u"capture",
                                            u"motor_set",   u"detail_about", u"read",  u"detail_set"};

/// The registers' captions stand between the titles and the other labels.
constexpr auto labels = [] {
  std::array<ScreenLabel, titles.size() + wire::registers.size() + others.size()> all;
  auto *next = all.begin();
  for (const QStringView name : titles) *next++ = {name, name};
  for (const wire::Register &row : wire::registers)
    *next++ = {row.label.empty() ? row.keys.name : row.label, row.keys.name};
  for (const QStringView name : others) *next++ = {name, name};
  return all;
}();

}  // namespace

std::span<const ScreenLabel> screenLabels() {
  return labels;
}

}  // namespace tavril
