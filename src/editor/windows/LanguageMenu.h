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

/// The entries of the language menu: the system's language, and each language by its own name in its own
/// font. Exactly one entry is marked. The menu owns this object.
class LanguageMenu final : public QObject {
  Q_OBJECT

 public:
  LanguageMenu(QMenu &menu, LanguageChoice &choice);

  /// Called again when the language has changed.
  void setTexts(const StringTable &strings);

 private:
  void mark();

  LanguageChoice &choice_;
  QActionGroup *group_;
  QAction *system_;
  QHash<QString, QAction *> byLanguage_;
};

}  // namespace tavril
