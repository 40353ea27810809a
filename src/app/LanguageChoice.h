#pragma once

#include <QString>
#include <QStringList>

#include <vector>

namespace tavril {

class Languages;
class Log;
class NotificationCenter;
class Preferences;

/// The language of the program's texts: that of the command line, else that chosen in an earlier run, else
/// the system's, else English. The user may choose another at any time.
class LanguageChoice {
 public:
  /// A language for the user to choose. Its name is in the language itself, or is the code if the table has
  /// no name.
  struct Offer {
    QString language;
    QString name;
  };

  /// `systemLanguages`: the user's languages according to the system, the preferred first.
  LanguageChoice(Languages &languages, Preferences &preferences, NotificationCenter &notifications, Log &log,
                 QStringList systemLanguages);

  /// Sets the language at start-up without a notification. `wanted` is for this run only and may be empty.
  /// Returns false and changes nothing if there is no table for it.
  bool begin(const QString &wanted);

  /// Sets the language for this run and later ones. Returns false if there is no table for it.
  bool choose(const QString &language);
  /// Forgets the user's choice and uses the system's language.
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
