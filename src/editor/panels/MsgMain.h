#pragma once

#include "protocol/Function.h"

#include <QString>

namespace tavril {

class CommandSender;
class PanelView;
struct Desktop;
struct SharedState;

/// The controller of the panel that asks before the servo is rebooted or reset.
class MsgMain {
 public:
  MsgMain(SharedState &state, CommandSender &sender, PanelView &view, const Desktop &desktop);

  /// Sets the texts that nobody else sets. Called again when the language has changed.
  void setTexts();
  /// Sets the texts and registers the question. Called after the main screen has loaded.
  void viewDidLoad();
  /// A button was pressed; its identifier is "cancel", "ok" or "close".
  void MsgButton(const QString &identifier);

 private:
  SharedState &state_;
  PanelView &view_;
  const Desktop &desktop_;
  Function FunctionCMD;
};

}  // namespace tavril
