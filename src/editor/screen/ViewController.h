#pragma once

#include "editor/dial/Knob.h"
#include "editor/dial/PositionDial.h"
#include "editor/screen/HoverNotices.h"
#include "editor/screen/PositionEntry.h"
#include "editor/screen/ValueEntry.h"

#include <QPointF>
#include <QString>
#include <QStringView>

#include <list>
#include <memory>
#include <span>
#include <vector>

namespace tavril {

class CommandSender;
class EditorView;
class Function;
class Timer;
struct Desktop;
struct SharedState;

/// The controller of the main screen. It registers the elements of the screen, carries out one request word
/// of `ToolbarFlag` in each tick of 0.01 s, watches the connection attempt, and sends the commands of the
/// buttons.
class ViewController {
 public:
  ViewController(SharedState &state, CommandSender &appdelegate, EditorView &view, const Desktop &desktop);
  ~ViewController();
  ViewController(const ViewController &) = delete;
  ViewController &operator=(const ViewController &) = delete;

  /// Sets up the screen and starts the tick. Called once, before the panels load.
  void viewDidLoad();
  /// Looks up title, texts and font size of the labels.
  void viewWillLayout();
  /// Shows everything in the new language.
  void languageDidChange();
  /// One tick.
  void update();

  /// Shows a position read from the servo; 1024 and more are ignored.
  void UpdateMotorValue(int position);
  void Colorreset();

  /// A button label was clicked; `identifier` tells which.
  void LabelTouchEvent(const QString &identifier);
  /// One second of the connection attempt is over.
  void ConnectTimeout();
  /// Reads the position. Kept: C66.
  void test();

  /// Shows the message panel when the flag is "true", else an alert.
  void CreateMSGview(const QString &flag);
  /// An alert "Please Wait...". Kept: C67.
  void actIndicatorBegin();

  /// A value field's entry was committed.
  void text(ScreenElement &sender) { valueEntry_.text(sender); }
  PositionEntry &positionEntry() { return *positionEntry_; }

  /// The pointer on the screen, in the design's coordinates. A press, with all that follows up to the
  /// release, is for the dial; moves without a press are for the notices.
  void mouseDown(QPointF location) { positionDial_->mouseDown(location); }
  void mouseDragged(QPointF location) { positionDial_->mouseDragged(location); }
  void mouseUp() { positionDial_->mouseUp(); }
  void mouseMoved(QPointF location) { hoverNotices_.mouseMoved(location); }
  /// A field has got the focus. Shows the notice with this key, which belongs to the row of the field.
  void focusCame(QStringView noticeKey) { hoverNotices_.focusCame(noticeKey); }
  /// The keys of the dial were used. Has the effect of dragging the knob to this position.
  void dragTo(int position) { positionDial_->dragTo(position); }

  const std::shared_ptr<Function> &FunctionCMD() const { return FunctionCMD_; }
  void setFunctionCMD(std::shared_ptr<Function> commands);

  int cnt = 30;    ///< seconds left of the connection attempt
  int cmdcnt = 1;  ///< register number of the write sweep

 private:
  /// One of the five labels that react to a click.
  struct Button;
  static std::span<const Button> buttons();
  void registerElements();
  void logHelpTables();
  bool carryOut(const QString &request);
  void askFor(QStringView questionKey);
  void setUsable(bool usable);
  void stopCountdowns();
  void flash();
  void sendPosition();
  void sweep();
  void logAnswer(int answer);

  SharedState &state_;
  EditorView &view_;
  const Desktop &desktop_;
  std::shared_ptr<Function> FunctionCMD_;
  Knob knob_;
  ValueEntry valueEntry_;
  HoverNotices hoverNotices_;
  std::unique_ptr<PositionEntry> positionEntry_;
  std::unique_ptr<PositionDial> positionDial_;
  std::shared_ptr<Timer> tick_;
  /// The running countdowns. There are several if the port was confirmed again during an attempt.
  std::vector<std::shared_ptr<Timer>> TimerCnt_;
  /// The timers that turn clicked buttons white again.
  std::list<std::shared_ptr<Timer>> flashes_;
};

}  // namespace tavril
