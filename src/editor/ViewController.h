#pragma once

#include "editor/HoverNotices.h"
#include "editor/Knob.h"
#include "editor/PositionDial.h"
#include "editor/PositionEntry.h"
#include "editor/ValueEntry.h"

#include <QPointF>
#include <QString>
#include <QStringView>

#include <list>
#include <memory>
#include <vector>

namespace tavril {

class CommandSender;
class EditorView;
class Function;
class Timer;
struct Desktop;
struct SharedState;

/// The controller of the main screen. It registers the screen's elements, carries out one request word of
/// `ToolbarFlag` per tick of 0.01 s, watches the connection attempt and sends the commands of the buttons.
/// Main thread only; owns nothing that it is given.
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
  /// The language is another: all that is shown is put into it.
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

  /// The pointer on the screen, in the design's coordinates. A press and what follows up to the release
  /// belong to the dial; a pointer without a button held asks for notices.
  void mouseDown(QPointF location) { positionDial_->mouseDown(location); }
  void mouseDragged(QPointF location) { positionDial_->mouseDragged(location); }
  void mouseUp() { positionDial_->mouseUp(); }
  void mouseMoved(QPointF location) { hoverNotices_.mouseMoved(location); }
  /// A field has got the focus: the notice with this key, which is its row's, is shown.
  void focusCame(QStringView noticeKey) { hoverNotices_.focusCame(noticeKey); }
  /// The dial's keys: as if the knob had been dragged there.
  void dragTo(int position) { positionDial_->dragTo(position); }

  const std::shared_ptr<Function> &FunctionCMD() const { return FunctionCMD_; }
  void setFunctionCMD(std::shared_ptr<Function> commands);

  int cnt = 30;    ///< seconds left of the connection attempt
  int cmdcnt = 1;  ///< register number of the write sweep

 private:
  void registerElements();
  void logHelpTables();
  bool carryOut(const QString &request);
  void askFor(QStringView questionKey);
  void setUsable(bool usable);
  void stopCountdowns();
  void flash();
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
  /// The countdowns that run: more than one when the port was confirmed again meanwhile.
  std::vector<std::shared_ptr<Timer>> TimerCnt_;
  /// What turns clicked buttons white again.
  std::list<std::shared_ptr<Timer>> flashes_;
};

}  // namespace tavril
