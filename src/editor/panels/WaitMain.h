#pragma once

#include <QString>

namespace tavril {

class PanelView;
struct Desktop;
struct SharedState;

/// The panel that covers the screen while the link and the servo are set up. Main thread only.
class WaitMain {
 public:
  WaitMain(SharedState &state, PanelView &view, const Desktop &desktop);

  /// Sets the texts, also when the language has changed. Those that others change are left to them.
  void setTexts();
  /// Sets the texts and registers what others change. After the main screen has loaded.
  void viewDidLoad();
  /// A button was pressed; the one with the identifier "close" gives up waiting.
  void WaitButton(const QString &identifier);

 private:
  SharedState &state_;
  PanelView &view_;
  const Desktop &desktop_;
};

}  // namespace tavril
