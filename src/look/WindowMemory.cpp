#include "look/WindowMemory.h"

#include "platform/Preferences.h"

#include <QGuiApplication>
#include <QRegularExpression>
#include <QRegularExpressionMatch>
#include <QScreen>

#include <algorithm>

namespace tavril {

namespace {

/// In points. A smaller window is not one that somebody has used.
constexpr int smallest = 50;

long long area(const QRect &rect) {
  return rect.isEmpty() ? 0 : static_cast<long long>(rect.width()) * rect.height();
}

/// The place nearest to `at` from which `length` fits between `low` and `low + room`.
int pushedInto(int at, int length, int low, int room) {
  return std::clamp(at, low, low + std::max(0, room - length));
}

QList<QRect> roomOnScreens() {
  QList<QRect> rooms;
  for (const QScreen *screen : QGuiApplication::screens()) rooms.append(screen->availableGeometry());
  return rooms;
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

WindowMemory::WindowMemory(QWidget &window, Preferences &preferences, bool placesWindows)
    : window_(window), preferences_(preferences), placesWindows_(placesWindows) {}

WindowMemory::WindowMemory(QWidget &window, Preferences &preferences)
    : WindowMemory(window, preferences,
                   !QGuiApplication::platformName().startsWith(QStringLiteral("wayland"))) {}

bool WindowMemory::restore() const {
  const auto text = preferences_.value(QString::fromUtf16(key));
  auto place = text ? WindowPlace::fromText(*text) : std::nullopt;
  if (!place) return false;
  if (!placesWindows_) place->position.reset();
  *place = place->within(roomOnScreens());
  window_.resize(place->size);
  if (place->position) window_.move(*place->position);
  if (place->isMaximized) window_.setWindowState(window_.windowState() | Qt::WindowMaximized);
  return true;
}

void WindowMemory::keep() const {
  WindowPlace place;
  place.isMaximized = window_.isMaximized();
  // The size and place that the window gets back when it no longer fills the screen.
  const bool asItIs = !window_.isMaximized() && !window_.isFullScreen() && !window_.isMinimized();
  const QRect normal = asItIs ? window_.geometry() : window_.normalGeometry();
  place.size = normal.size();
  // The corner of the frame, because move() sets the place of the frame.
  if (placesWindows_) place.position = normal.topLeft() + window_.pos() - window_.geometry().topLeft();
  const QString text = place.text();
  const QString kept = preferences_.value(QString::fromUtf16(key)).value_or(QString());
  if (text != kept && WindowPlace::fromText(text)) preferences_.setValue(QString::fromUtf16(key), text);
}

}  // namespace tavril
