#pragma once

#include <QScrollArea>
#include <QWidget>

namespace tavril {

/// Shows a screen whole where there is room, and with scroll bars where there is not. Whatever gets the
/// keyboard's focus is scrolled into view, and with a button of a panel its whole panel, as far as it fits.
class ScreenScroller final : public QScrollArea {
  Q_OBJECT

 public:
  explicit ScreenScroller(QWidget *parent = nullptr);

 private:
  void follow(QWidget *focus);
  void bringIntoView(const QWidget &element);
};

}  // namespace tavril
