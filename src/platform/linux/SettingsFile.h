#pragma once

#include "platform/Preferences.h"

#include <QHash>
#include <QString>

#include <optional>

namespace tavril {

class Log;
class PrivateFiles;

/// The preferences in an INI file that only the user can read. It comes into being when something is first
/// kept. A damaged file counts as empty and is replaced then; what is no regular file, or far larger than
/// such a file can be, is left alone. What cannot be written holds for this run.
class SettingsFile final : public Preferences {
 public:
  static constexpr qint64 largestSize = 1024 * 1024;

  /// Owns neither service.
  SettingsFile(QString path, PrivateFiles &files, Log &log);

  /// Below the folder where a desktop keeps its programs' settings, "~/.config/tavril/tavril.conf".
  static QString standardPath();

  std::optional<QString> value(const QString &key) const override;
  bool setValue(const QString &key, const QString &value) override;
  bool remove(const QString &key) override;

 private:
  bool write(const QString &key, const QString &value);
  bool erase(const QString &key);
  bool mayBeOpened() const;
  bool isLink() const;
  bool prepare();
  void complain(const QString &problem) const;

  QString path_;
  /// What could not be written: the values, and nothing for what could not be removed.
  QHash<QString, std::optional<QString>> unwritten_;
  PrivateFiles &files_;
  Log &log_;
};

}  // namespace tavril
