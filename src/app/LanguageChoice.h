#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril {

class Languages;
class Log;
class NotificationCenter;
class Preferences;

/// Which language the program's texts have: what the command line says, else what the user chose before, else
/// what the system says, else English. The user may choose another at any time. Main thread only; owns
/// nothing it is given.
class LanguageChoice {
 public:
  /// A language as the user is offered it: by its own name, or by its code where the table has no name.
  struct Offer {
    QString language;
    QString name;
  };

  /// `systemLanguages`: what the user reads according to the system, the preferred first.
  LanguageChoice(Languages &languages, Preferences &preferences, NotificationCenter &notifications, Log &log,
                 QStringList systemLanguages);

  /// Sets the language at start-up; nobody is told. `wanted` is for this run only and may be empty. False,
  /// and nothing changes, when there is no table for it.
  bool begin(const QString &wanted);

  /// From now on and in later runs this language. False when there is no table for it.
  bool choose(const QString &language);
  /// Forgets what was chosen, and goes by the system again.
  void followSystem();

  std::vector<Offer> offers() const;
  QString language() const;
  bool followsSystem() const { return followsSystem_; }

 private:
  void change(const QString &language);

  Languages &languages_;
  Preferences &preferences_;
  NotificationCenter &notifications_;
  Log &log_;
  QStringList systemLanguages_;
  bool followsSystem_ = true;
};

}  // namespace tavril
