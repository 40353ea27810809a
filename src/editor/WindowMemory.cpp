#include "editor/WindowMemory.h"

#include "editor/WindowPlace.h"
#include "platform/Preferences.h"

#include <QGuiApplication>
#include <QList>
#include <QRect>
#include <QScreen>
#include <QString>

#include <optional>

namespace tavril {

namespace {

QList<QRect> roomOnScreens() {
  QList<QRect> rooms;
  for (const QScreen *screen : QGuiApplication::screens()) rooms.append(screen->availableGeometry());
  return rooms;
}

}  // namespace

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
  // What it goes back to when it fills the screen no more.
  const bool asItIs = !window_.isMaximized() && !window_.isFullScreen() && !window_.isMinimized();
  const QRect normal = asItIs ? window_.geometry() : window_.normalGeometry();
  place.size = normal.size();
  // The corner of the frame, which is what a window is moved by.
  if (placesWindows_) place.position = normal.topLeft() + window_.pos() - window_.geometry().topLeft();
  const QString text = place.text();
  const QString kept = preferences_.value(QString::fromUtf16(key)).value_or(QString());
  if (text != kept && WindowPlace::fromText(text)) preferences_.setValue(QString::fromUtf16(key), text);
}

}  // namespace tavril
