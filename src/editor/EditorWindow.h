#pragma once

#include "app/AppDelegate.h"
#include "editor/ActionElement.h"
#include "editor/MsgMain.h"
#include "editor/ViewController.h"
#include "editor/WaitMain.h"
#include "editor/WidgetView.h"
#include "editor/WindowsCtrl.h"

#include <QCloseEvent>
#include <QEvent>
#include <QMainWindow>
#include <QObject>
#include <QResizeEvent>
#include <QShowEvent>
#include <QSize>

#include <functional>
#include <memory>
#include <vector>

class QAction;
class QMenu;

namespace tavril {

class LanguageChoice;
class LanguageMenu;
class MainScreen;
class MsgPanel;
class WaitPanel;

/// The main window: the screen with its two panels, their controllers, and the menus. On a desktop that is
/// smaller than the screen it scrolls. Main thread only; owns nothing that it is given.
class EditorWindow final : public QMainWindow {
  Q_OBJECT

 public:
  /// What the menus do beside asking the screen for an action.
  struct Actions {
    std::function<void()> openPortSetting;
    std::function<void()> openDoctor;
    std::function<void()> quit;
    std::function<void()> about;
    std::function<void()> openConverter;
    std::function<void()> openTables;
    std::function<void()> userGuide;
    std::function<void()> seen;  ///< once, when the window can first be seen
    WindowsCtrl::EndProcess endProcess;
    LanguageChoice *language =
        nullptr;  ///< what the language menu chooses from; without it there is no such menu
  };

  EditorWindow(SharedState &state, AppDelegate &appdelegate, const Desktop &desktop, Actions actions);
  ~EditorWindow() override;

  /// The items whose titles the application looks up when it has launched.
  MenuOutlets menuOutlets();
  /// Makes the window as large as its screen needs, or as the desktop has room for. Once the menus have their
  /// titles.
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
  void buildMenus(AppDelegate &appdelegate);
  void setToolTexts();
  void wireScreen();
  void addLanguageMenu(QMenu &tavril);
  ScreenElement *item(QAction *action);
  void setTexts();
  void languageDidChange();

  AppDelegate &appdelegate_;
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
  std::vector<std::unique_ptr<ActionElement>> items_;
  MenuOutlets outlets_;
  QAction *converter_ = nullptr;
  QAction *tables_ = nullptr;
  LanguageMenu *languageMenu_ = nullptr;
};

}  // namespace tavril
