#include "protocol/RegisterCatalogue.h"

#include <algorithm>
#include <array>

namespace tavril {

namespace {

constexpr RegisterRow viewOf(const wire::Register &row) {
  return {row.number, row.keys.help, row.keys.value, row.keys.entry, row.keys.name, row.reply};
}

constexpr auto rows = [] {
  std::array<RegisterRow, wire::registerCount> views;
  std::ranges::transform(wire::registers, views.begin(), viewOf);
  return views;
}();

}  // namespace

QString RegisterRow::toolTipKey() const {
  return isSetting() ? QStringLiteral("ToolTip_") + nameKey.toString() : QString();
}

QString RegisterRow::noticeKey() const {
  return QStringLiteral("NoticeMsg_") + nameKey.toString();
}

std::span<const RegisterRow, wire::registerCount> registerCatalogue() {
  return rows;
}

std::span<const RegisterRow, wire::settingCount> settingRegisters() {
  return std::span(rows).first<wire::settingCount>();
}

const RegisterRow *findRegister(int number) {
  const auto *row = std::ranges::find(rows, number, &RegisterRow::number);
  return row == rows.end() ? nullptr : row;
}

}  // namespace tavril
