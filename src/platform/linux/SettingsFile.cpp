#include "platform/linux/SettingsFile.h"

#include "platform/Log.h"
#include "platform/PrivateFiles.h"

#include <QFile>
#include <QFileDevice>
#include <QFileInfo>
#include <QIODevice>
#include <QSettings>
#include <QStandardPaths>
#include <QVariant>

#include <utility>

namespace tavril {

namespace {

constexpr QFileDevice::Permissions forTheUserAlone = QFileDevice::ReadOwner | QFileDevice::WriteOwner;

void clearIfDamaged(QSettings &settings) {
  settings.allKeys();  // looks into every section
  if (settings.status() == QSettings::FormatError) settings.clear();
}

}  // namespace

SettingsFile::SettingsFile(QString path, PrivateFiles &files, Log &log)
    : path_(std::move(path)), files_(files), log_(log) {}

QString SettingsFile::standardPath() {
  return QStandardPaths::writableLocation(QStandardPaths::GenericConfigLocation) +
         QStringLiteral("/tavril/tavril.conf");
}

std::optional<QString> SettingsFile::value(const QString &key) const {
  if (const auto unwritten = unwritten_.constFind(key); unwritten != unwritten_.cend()) return *unwritten;
  if (!QFileInfo::exists(path_) || !mayBeOpened()) return {};
  const QSettings settings(path_, QSettings::IniFormat);
  const QVariant found = settings.value(key);
  // Not before: a section is looked into when something of it is asked for.
  if (settings.status() != QSettings::NoError) {
    complain(settings.status() == QSettings::FormatError ? QStringLiteral("it is damaged and is not used")
                                                         : QStringLiteral("it cannot be read"));
    return {};
  }
  if (!found.isValid()) return {};
  return found.toString();
}

bool SettingsFile::setValue(const QString &key, const QString &value) {
  const bool isKept = write(key, value);
  if (isKept) {
    unwritten_.remove(key);
  } else {
    unwritten_.insert(key, value);
  }
  return isKept;
}

bool SettingsFile::remove(const QString &key) {
  const bool isGone = erase(key);
  if (isGone) {
    unwritten_.remove(key);
  } else {
    unwritten_.insert(key, std::nullopt);
  }
  return isGone;
}

bool SettingsFile::write(const QString &key, const QString &value) {
  if (isLink() || !prepare()) return false;
  {
    QSettings settings(path_, QSettings::IniFormat);
    clearIfDamaged(settings);
    settings.setValue(key, value);
    settings.sync();
    if (settings.status() == QSettings::AccessError) {
      complain(QStringLiteral("it cannot be written"));
      return false;
    }
  }
  QFile::setPermissions(path_, forTheUserAlone);
  return true;
}

bool SettingsFile::erase(const QString &key) {
  if (!QFileInfo::exists(path_)) return true;
  if (isLink() || !mayBeOpened()) return false;
  QSettings settings(path_, QSettings::IniFormat);
  clearIfDamaged(settings);
  settings.remove(key);
  settings.sync();
  if (settings.status() != QSettings::AccessError) return true;
  complain(QStringLiteral("it cannot be written"));
  return false;
}

bool SettingsFile::mayBeOpened() const {
  // Opening a pipe would wait for somebody to write into it.
  const QFileInfo file(path_);
  if (!file.isFile()) {
    complain(QStringLiteral("it is not a file"));
    return false;
  }
  if (file.size() > largestSize) {
    complain(QStringLiteral("it is larger than 1 MiB"));
    return false;
  }
  return true;
}

bool SettingsFile::isLink() const {
  if (!QFileInfo(path_).isSymLink()) return false;
  complain(QStringLiteral("it is a symbolic link, and Tavril does not write to links"));
  return true;
}

bool SettingsFile::prepare() {
  if (QFileInfo::exists(path_)) return mayBeOpened();
  if (const auto error = files_.makeFolder(QFileInfo(path_).path())) {
    complain(error->localizedDescription + u' ' + error->localizedFailureReason);
    return false;
  }
  // Made before the settings are, which would leave the file open to all for a moment.
  QFile file(path_);
  if (file.open(QIODevice::WriteOnly | QIODevice::NewOnly, forTheUserAlone)) return true;
  complain(file.errorString());
  return false;
}

void SettingsFile::complain(const QString &problem) const {
  log_.warn(QStringLiteral("Settings file %1: %2.").arg(path_, problem));
}

}  // namespace tavril
