#include "editor/windows/LanguageMenu.h"

#include "app/LanguageChoice.h"
#include "look/Style.h"
#include "platform/PlainTitle.h"
#include "platform/StringTable.h"

#include <QAction>
#include <QActionGroup>
#include <QMenu>

namespace tavril {

LanguageMenu::LanguageMenu(QMenu &menu, LanguageChoice &choice)
    : QObject(&menu), choice_(choice), group_(new QActionGroup(this)), system_(menu.addAction(QString())) {
  system_->setCheckable(true);
  group_->addAction(system_);
  connect(system_, &QAction::triggered, this, [this] {
    choice_.followSystem();
    mark();
  });
  menu.addSeparator();
  for (const LanguageChoice::Offer &offer : choice_.offers()) {
    QAction *action = menu.addAction(plainTitle(offer.name));
    action->setCheckable(true);
    action->setObjectName(QStringLiteral("language_") + offer.language);
    action->setFont(Style::languageFont(offer.language));
    group_->addAction(action);
    byLanguage_.insert(offer.language, action);
    connect(action, &QAction::triggered, this, [this, language = offer.language] {
      choice_.choose(language);
      mark();
    });
  }
  connect(&menu, &QMenu::aboutToShow, this, &LanguageMenu::mark);
}

void LanguageMenu::setTexts(const StringTable &strings) {
  system_->setText(plainTitle(strings.text(u"system_language")));
  mark();
}

/// Marks the current entry.
void LanguageMenu::mark() {
  // Without any string table, the language in use has no entry.
  QAction *current = choice_.followsSystem() ? system_ : byLanguage_.value(choice_.language());
  if (current) current->setChecked(true);
}

}  // namespace tavril
