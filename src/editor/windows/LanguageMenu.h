#pragma once

#include <QHash>
#include <QObject>
#include <QString>

class QAction;
class QActionGroup;
class QMenu;

namespace tavril {

class LanguageChoice;
class StringTable;

/// The entries of the menu in which the language of all texts is chosen: the system's own, and each language
/// by its own name in its own face. Exactly one is marked. The menu owns it.
class LanguageMenu final : public QObject {
  Q_OBJECT

 public:
  LanguageMenu(QMenu &menu, LanguageChoice &choice);

  /// To be called again when the language has changed.
  void setTexts(const StringTable &strings);

 private:
  void mark();

  LanguageChoice &choice_;
  QActionGroup *group_;
  QAction *system_;
  QHash<QString, QAction *> byLanguage_;
};

}  // namespace tavril
