#include "editor/WindowPlace.h"

#include <QRegularExpression>
#include <QRegularExpressionMatch>

#include <algorithm>

namespace tavril {

namespace {

/// In points; less is not a window that somebody has used.
constexpr int smallest = 50;

long long area(const QRect &rect) {
  return rect.isEmpty() ? 0 : static_cast<long long>(rect.width()) * rect.height();
}

/// The place nearest to `at` from which `length` fits between `low` and `low + room`.
int pushedInto(int at, int length, int low, int room) {
  return std::clamp(at, low, low + std::max(0, room - length));
}

}  // namespace

QString WindowPlace::text() const {
  QString text = QStringLiteral("%1x%2").arg(size.width()).arg(size.height());
  const auto signedNumber = [](int number) {
    return (number < 0 ? QString() : QStringLiteral("+")) + QString::number(number);
  };
  if (position) text += signedNumber(position->x()) + signedNumber(position->y());
  if (isMaximized) text += QStringLiteral(" maximized");
  return text;
}

std::optional<WindowPlace> WindowPlace::fromText(QStringView text) {
  static const QRegularExpression form(
      QStringLiteral("\\A([0-9]{1,5})x([0-9]{1,5})(?:([+-][0-9]{1,5})([+-][0-9]{1,5}))?( maximized)?\\z"));
  const QRegularExpressionMatch match = form.match(text.toString());
  if (!match.hasMatch()) return {};
  WindowPlace place;
  place.size = QSize(match.captured(1).toInt(), match.captured(2).toInt());
  if (place.size.width() < smallest || place.size.height() < smallest) return {};
  if (match.hasCaptured(3)) place.position = QPoint(match.captured(3).toInt(), match.captured(4).toInt());
  place.isMaximized = match.hasCaptured(5);
  return place;
}

WindowPlace WindowPlace::within(const QList<QRect> &screens) const {
  if (screens.isEmpty()) return *this;
  WindowPlace result = *this;
  QRect screen = screens.constFirst();
  if (position) {
    const QRect wanted(*position, size);
    const auto inCommon = [&](const QRect &one) { return area(one & wanted); };
    screen = *std::ranges::max_element(screens, {}, inCommon);
  }
  result.size = size.boundedTo(screen.size());
  if (position) {
    result.position = QPoint(pushedInto(position->x(), result.size.width(), screen.x(), screen.width()),
                             pushedInto(position->y(), result.size.height(), screen.y(), screen.height()));
  }
  return result;
}

}  // namespace tavril
