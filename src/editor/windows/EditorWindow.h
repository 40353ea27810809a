#pragma once

#include "editor/panels/MsgMain.h"
#include "editor/panels/WaitMain.h"
#include "editor/screen/ViewController.h"
#include "editor/screen/WidgetView.h"
#include "editor/windows/MainMenu.h"
#include "editor/windows/WindowsCtrl.h"

#include <QCloseEvent>
#include <QEvent>
#include <QMainWindow>
#include <QObject>
#include <QResizeEvent>
#include <QShowEvent>
#include <QSize>

#include <functional>
#include <memory>

namespace tavril {

class LanguageChoice;
class MainScreen;
class MsgPanel;
class WaitPanel;

/// The main window: the screen with its two panels, their controllers, and the menus. On a desktop that is
/// smaller than the screen, the window scrolls.
class EditorWindow final : public QMainWindow {
  Q_OBJECT

 public:
  /// The actions that the window calls.
  struct Actions : MenuActions {
    std::function<void()> seen;  ///< once, when the window can first be seen
    WindowsCtrl::EndProcess endProcess;
    LanguageChoice *language =
        nullptr;  ///< what the language menu chooses from; without it there is no such menu
  };

  EditorWindow(SharedState &state, AppDelegate &appdelegate, const Desktop &desktop, Actions actions);
  ~EditorWindow() override;

  MenuOutlets menuOutlets() const { return menu_->outlets(); }
  /// Makes the window as large as its screen needs, or as the desktop allows. Called after the menus have
  /// their titles.
  void fitInto(const QSize &available);
  MainScreen &mainScreen() { return *screen_; }
  ViewController &controller() { return *controller_; }

 protected:
  void showEvent(QShowEvent *event) override;
  void resizeEvent(QResizeEvent *event) override;
  void closeEvent(QCloseEvent *event) override;
  bool eventFilter(QObject *watched, QEvent *event) override;

 private:
  void buildScreen(SharedState &state, AppDelegate &appdelegate);
  void wireScreen();
  void setTexts();
  void languageDidChange();

  const Desktop &desktop_;
  Actions actions_;
  MainScreen *screen_ = nullptr;
  MsgPanel *msgPanel_ = nullptr;
  WaitPanel *waitPanel_ = nullptr;
  std::unique_ptr<WidgetView> screenView_;
  std::unique_ptr<WidgetView> msgView_;
  std::unique_ptr<WidgetView> waitView_;
  std::unique_ptr<ViewController> controller_;
  std::unique_ptr<MsgMain> message_;
  std::unique_ptr<WaitMain> waiting_;
  std::unique_ptr<WindowsCtrl> windowController_;
  std::unique_ptr<MainMenu> menu_;
};

}  // namespace tavril
