#include "editor/windows/MainMenu.h"

#include "editor/windows/LanguageMenu.h"
#include "platform/PlainTitle.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"

#include <QKeySequence>
#include <QMenu>
#include <QMenuBar>
#include <QObject>
#include <QPointer>

#include <utility>

namespace tavril {

namespace {

/// A menu item as a screen element, whose text is the title. A menu is represented by its own item.
class ActionElement final : public ScreenElement {
 public:
  explicit ActionElement(QAction *action) : action_(action) {}

  QString text() const override { return action_ ? textOfTitle(action_->text()) : QString(); }
  void setText(const QString &text) override {
    if (action_) action_->setText(plainTitle(text));
  }
  bool isEnabled() const override { return action_ && action_->isEnabled(); }
  void setEnabled(bool enabled) override {
    if (action_) action_->setEnabled(enabled);
  }
  bool isHidden() const override { return !action_ || !action_->isVisible(); }
  void setHidden(bool hidden) override {
    if (action_) action_->setVisible(!hidden);
  }
  QString toolTip() const override { return action_ ? action_->toolTip() : QString(); }
  void setToolTip(const QString &toolTip) override {
    if (action_) action_->setToolTip(toolTip);
  }
  QString identifier() const override { return action_ ? action_->objectName() : QString(); }

 private:
  QPointer<QAction> action_;
};

}  // namespace

MainMenu::MainMenu(QMenuBar &bar, const MenuActions &actions, AppDelegate &appdelegate,
                   LanguageChoice *languages, const StringTable &strings)
    : strings_(strings) {
  std::map<QStringView, QMenu *> menus;
  for (const MenuRow &row : menuRows) {
    QMenu *&menu = menus[row.menu];
    if (!menu) {
      menu = bar.addMenu(QString());
      keep(row.menu, menu->menuAction());
    }
    if (row.item.isEmpty()) {
      menu->addSeparator();
    } else if (const auto *action = std::get_if<MenuRow::Action>(&row.does)) {
      add(*menu, row, actions.**action);
    } else if (const auto *request = std::get_if<MenuRow::Request>(&row.does)) {
      add(*menu, row, [&appdelegate, act = *request] { (appdelegate.*act)(); });
    } else if (languages) {
      QMenu *submenu = menu->addMenu(QString());
      menu->addSeparator();
      languageMenu_ = new LanguageMenu(*submenu, *languages);
      keep(row.item, submenu->menuAction());
    }
  }
  setTexts();
}

MainMenu::~MainMenu() = default;

void MainMenu::add(QMenu &menu, const MenuRow &row, std::function<void()> act) {
  QAction *action = menu.addAction(QString());
  if (row.shortcut) action->setShortcut(*row.shortcut);
  action->setMenuRole(row.role);
  action->setVisible(act != nullptr);
  QObject::connect(action, &QAction::triggered, &menu, [act = std::move(act)] { act(); });
  keep(row.item, action);
}

void MainMenu::keep(QStringView key, QAction *action) {
  items_[key] = std::make_unique<ActionElement>(action);
}

MenuOutlets MainMenu::outlets() const {
  MenuOutlets outlets;
  for (const MenuTitle &title : menuTitles) outlets.*title.outlet = items_.at(title.key).get();
  return outlets;
}

void MainMenu::setTexts() {
  for (const auto &[key, item] : items_) item->setText(strings_.text(key));
  if (languageMenu_) languageMenu_->setTexts(strings_);
}

}  // namespace tavril
