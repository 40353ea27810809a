#pragma once

#include <QHash>
#include <QObject>
#include <QString>

class QAction;
class QActionGroup;
class QMenu;

namespace tavril {

class LanguageChoice;

/// The entries of the menu in which the language of all texts is chosen: the system's own, and each language
/// by its own name in its own face. Exactly one is marked. Main thread only; the menu owns it.
class LanguageMenu final : public QObject {
  Q_OBJECT

 public:
  LanguageMenu(QMenu &menu, LanguageChoice &choice);

  /// The entry for the system's language, whose title is for others to set.
  QAction *systemAction() const { return system_; }
  /// Marks the entry that holds at the moment.
  void mark();

 private:
  LanguageChoice &choice_;
  QActionGroup *group_;
  QAction *system_;
  QHash<QString, QAction *> byLanguage_;
};

}  // namespace tavril
