#include "editor/screen/HoverNotices.h"

#include "editor/screen/EditorView.h"
#include "platform/Desktop.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"

#include <algorithm>
#include <array>
#include <cstddef>

namespace tavril {

namespace {

constexpr float rowHeight = 25;
/// Where the rows of the registers begin, in their order. Kept: C81.
constexpr std::array<float, wire::registerCount> rowBases{618, 589, 560, 534, 505, 476, 447, 419, 392, 363,
                                                          334, 305, 277, 249, 220, 192, 164, 136, 107, 79};
static_assert(rowBases.back() > 0, "each register has a row");

bool isBetween(double low, double value, double high) {
  return low < value && value < high;
}

const RegisterRow *rowAt(QPointF location) {
  if (!isBetween(374, location.x(), 619)) return nullptr;
  for (const RegisterRow &row : registerCatalogue()) {
    const float base = rowBases[static_cast<std::size_t>(row.number) - 1];
    const float top = base + rowHeight;
    if (isBetween(static_cast<double>(base), location.y(), static_cast<double>(top))) return &row;
  }
  return nullptr;
}

/// The key of the status list that is shown below the notice; empty if there is none.
QString listKey(const RegisterRow &row) {
  if (row.reply == wire::ReplyValue::ErrorBits) return QStringLiteral("Error");
  if (row.reply == wire::ReplyValue::DetailBits) return QStringLiteral("Detail");
  return {};
}

}  // namespace

HoverNotices::HoverNotices(SharedState &state, EditorView &view, const Desktop &desktop)
    : state_(state), view_(view), strings_(desktop.strings) {}

void HoverNotices::reset() {
  str = KeyedText();
}

void HoverNotices::mouseMoved(QPointF location) {
  if (isBetween(0, location.x(), 1024) && isBetween(0, location.y(), 768)) {
    if (const RegisterRow *row = rowAt(location)) take(*row);
    show();
  } else if (isBetween(658, location.x(), 993) && isBetween(103, location.y(), 307)) {
    state_.TextMouseFlag = QStringLiteral("MouseDown");  // Kept: C82.
  }
}

void HoverNotices::focusCame(QStringView noticeKey) {
  const auto rows = registerCatalogue();
  const auto row = std::ranges::find(rows, noticeKey, &RegisterRow::noticeKey);
  if (row == rows.end()) return;
  take(*row);
  show();
}

void HoverNotices::take(const RegisterRow &row) {
  str = KeyedText(row.noticeKey());
  const KeyedText entry = state_.ErrorMsgShowToMegView.value(listKey(row));
  if (!entry.isEmpty()) str += entry + KeyedText::words(QStringLiteral("\n"));
}

void HoverNotices::show() {
  view_.setTextLook(u"NoticeMSGview", 18, LabelColor::White);
  state_.ObjectDictionaryArray.show(u"NoticeMSGview", str, strings_);
}

}  // namespace tavril
