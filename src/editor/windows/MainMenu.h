#pragma once

#include "app/AppDelegate.h"

#include <QAction>
#include <QKeyCombination>
#include <QString>
#include <QStringView>

#include <functional>
#include <map>
#include <memory>
#include <optional>
#include <variant>

class QMenu;
class QMenuBar;

namespace tavril {

class LanguageChoice;
class LanguageMenu;
class ScreenElement;
class StringTable;

/// What the items of the menus do. An item whose action is not given is hidden.
struct MenuActions {
  std::function<void()> about;
  std::function<void()> quit;
  std::function<void()> openPortSetting;
  std::function<void()> openDoctor;
  std::function<void()> openConverter;
  std::function<void()> openTables;
  std::function<void()> userGuide;
};

/// An item of a menu: the key of the menu's title and the key of its own. Without a key it is a separator.
struct MenuRow {
  using Action = std::function<void()> MenuActions::*;
  using Request = void (AppDelegate::*)();

  QStringView menu;
  QStringView item = {};
  std::variant<std::monostate, Action, Request> does = {};
  std::optional<QKeyCombination> shortcut = {};
  QAction::MenuRole role = QAction::TextHeuristicRole;
};

/// The menus from left to right, and their items from top to bottom.
inline constexpr MenuRow menuRows[]{
    {u"tavril", u"about_tavril", &MenuActions::about, {}, QAction::AboutRole},
    {u"tavril", u"language"},  // does nothing itself: the menu of the languages
    {u"tavril", u"quit_tavril", &MenuActions::quit, Qt::CTRL | Qt::Key_Q, QAction::QuitRole},
    {u"config", u"port_setting", &MenuActions::openPortSetting, Qt::CTRL | Qt::Key_P},
    {u"config", u"detection_motor", &AppDelegate::DetectionMotro, Qt::CTRL | Qt::Key_D},
    {u"config", u"connection_doctor", &MenuActions::openDoctor, Qt::CTRL | Qt::SHIFT | Qt::Key_D},
    {u"tool", u"reboot_servo", &AppDelegate::RebootServo, Qt::CTRL | Qt::SHIFT | Qt::Key_R},
    {u"tool", u"reset_servo", &AppDelegate::ResetServo, Qt::CTRL | Qt::SHIFT | Qt::Key_Delete},
    {u"tool"},
    {u"tool", u"strings_converter", &MenuActions::openConverter, Qt::CTRL | Qt::SHIFT | Qt::Key_S},
    {u"tool", u"string_tables", &MenuActions::openTables, Qt::CTRL | Qt::SHIFT | Qt::Key_T},
    {u"help", u"user_guide", &MenuActions::userGuide, Qt::Key_F1},
};

/// The menu bar of the main window, built from the table above.
class MainMenu final {
 public:
  /// `languages`: the languages to choose from. Without it there is no language menu.
  MainMenu(QMenuBar &bar, const MenuActions &actions, AppDelegate &appdelegate, LanguageChoice *languages,
           const StringTable &strings);
  ~MainMenu();

  /// The items whose titles the application sets when it has launched.
  MenuOutlets outlets() const;
  /// Looks up all titles. Called again when the language has changed.
  void setTexts();

 private:
  void add(QMenu &menu, const MenuRow &row, std::function<void()> act);
  void keep(QStringView key, QAction *action);

  const StringTable &strings_;
  std::map<QStringView, std::unique_ptr<ScreenElement>> items_;  ///< by the keys of their titles
  LanguageMenu *languageMenu_ = nullptr;
};

}  // namespace tavril
