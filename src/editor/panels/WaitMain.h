#pragma once

#include <QString>

namespace tavril {

class PanelView;
struct Desktop;
struct SharedState;

/// The controller of the panel that covers the screen while the link and the servo are set up.
class WaitMain {
 public:
  WaitMain(SharedState &state, PanelView &view, const Desktop &desktop);

  /// Sets the texts that nobody else sets. Called again when the language has changed.
  void setTexts();
  /// Sets the texts and registers the elements that others change. Called after the main screen has loaded.
  void viewDidLoad();
  /// A button was pressed; the one with the identifier "close" gives up waiting.
  void WaitButton(const QString &identifier);

 private:
  SharedState &state_;
  PanelView &view_;
  const Desktop &desktop_;
};

}  // namespace tavril
