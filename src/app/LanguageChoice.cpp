#include "app/LanguageChoice.h"

#include "platform/Languages.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/Preferences.h"
#include "platform/StringTable.h"

#include <utility>

namespace tavril {

namespace {

/// The key of the choice in the preferences.
QString preference() {
  return QStringLiteral("language");
}

}  // namespace

LanguageChoice::LanguageChoice(Languages &languages, Preferences &preferences,
                               NotificationCenter &notifications, Log &log, QStringList systemLanguages)
    : languages_(languages),
      preferences_(preferences),
      notifications_(notifications),
      log_(log),
      systemLanguages_(std::move(systemLanguages)) {}

bool LanguageChoice::begin(const QString &wanted) {
  if (!wanted.isEmpty()) {
    if (!languages_.setLanguage(wanted)) return false;
    followsSystem_ = false;
    return true;
  }
  if (const auto remembered = preferences_.value(preference())) {
    followsSystem_ = !languages_.setLanguage(*remembered);
    if (!followsSystem_) return true;
    log_.warn(QStringLiteral("There is no string table \"%1\" any more, which was chosen before.")
                  .arg(*remembered));
  }
  languages_.setLanguage(languages_.bestFor(systemLanguages_));
  return true;
}

bool LanguageChoice::choose(const QString &language) {
  if (!languages_.languages().contains(language)) return false;
  followsSystem_ = false;
  preferences_.setValue(preference(), language);
  change(language);
  return true;
}

void LanguageChoice::followSystem() {
  followsSystem_ = true;
  preferences_.remove(preference());
  change(languages_.bestFor(systemLanguages_));
}

void LanguageChoice::change(const QString &language) {
  if (language == languages_.language() || !languages_.setLanguage(language)) return;
  notifications_.post({QString::fromUtf16(LanguageDidChangeNotification), this, {}});
}

std::vector<LanguageChoice::Offer> LanguageChoice::offers() const {
  std::vector<Offer> offers;
  const QString nameKey = QStringLiteral("language_name");
  for (const QString &language : languages_.languages()) {
    const QString name = languages_.table(language).text(nameKey);
    offers.push_back({language, name.isEmpty() || name == nameKey ? language : name});
  }
  return offers;
}

QString LanguageChoice::language() const {
  return languages_.language();
}

}  // namespace tavril
