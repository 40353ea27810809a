#include "platform/linux/StringTables.h"

#include "platform/Error.h"
#include "platform/Log.h"
#include "platform/StringTableFile.h"
#include "posix/Files.h"

#include <QByteArray>
#include <QCoreApplication>
#include <QDir>
#include <QFile>
#include <QRegularExpression>
#include <QStandardPaths>

#include <cerrno>
#include <string>

namespace tavril {

namespace {

/// Reads a regular file of bearable size; otherwise `problem` says why not. The folder may be one where
/// anybody's files end up.
QByteArray readTable(const QString &path, QString &problem) {
  std::string bytes;
  const int number = posix::readRegularFile(QFile::encodeName(path).constData(), posix::Links::Followed,
                                            StringTableFile::largestSize, bytes);
  if (number == EISDIR || number == EINVAL) {
    problem = QStringLiteral("it is not a file");
  } else if (number == EFBIG) {
    problem = QStringLiteral("it is larger than 4 MiB");
  } else if (number != 0) {
    problem = systemErrorText(number);
  }
  return QByteArray::fromStdString(bytes);
}

bool isLanguage(const QString &name) {
  static const QRegularExpression tag(QStringLiteral("\\A[A-Za-z]{2,8}(-[A-Za-z0-9]{1,8})*\\z"));
  return tag.match(name).hasMatch();
}

/// Chinese is told apart by script, but users mostly name a region.
QString chineseScript(const QStringList &subtags) {
  if (subtags.contains(u"hans", Qt::CaseInsensitive)) return QStringLiteral("zh-Hans");
  for (const char16_t *traditional : {u"hant", u"tw", u"hk", u"mo"}) {
    if (subtags.contains(QStringView(traditional), Qt::CaseInsensitive)) return QStringLiteral("zh-Hant");
  }
  return QStringLiteral("zh-Hans");
}

/// The tags that would do for a wanted one, the best first: "de-AT-1996", "de-AT", "de".
QStringList tagsFor(QString wanted) {
  // A POSIX locale name may carry an encoding and a variant, "zh_TW.UTF-8@stroke".
  wanted = wanted.section(u'.', 0, 0).section(u'@', 0, 0).replace(u'_', u'-');
  QStringList subtags = wanted.split(u'-', Qt::SkipEmptyParts);
  QStringList tags;
  const bool chinese = !subtags.isEmpty() && subtags.first().compare(u"zh", Qt::CaseInsensitive) == 0;
  const QString script = chinese ? chineseScript(subtags) : QString();
  for (; !subtags.isEmpty(); subtags.removeLast()) {
    if (chinese && subtags.size() == 1) tags.append(script);
    tags.append(subtags.join(u'-'));
  }
  return tags;
}

}  // namespace

StringTables::StringTables(const QStringList &folders, Log &log) {
  for (const QString &folder : folders) {
    readFolder(folder, QStringLiteral(".h"), log);
    readFolder(folder, QStringLiteral(".strings"), log);
  }
}

QStringList StringTables::standardFolders() {
  QStringList folders;
  const QDir program(QCoreApplication::applicationDirPath());
  for (const QString &own : {QStringLiteral("strings"), QStringLiteral("../share/tavril/strings")}) {
    const QString folder = QDir::cleanPath(program.filePath(own));
    // A system folder of programs has one named "strings", which is no folder.
    if (!QDir(folder).exists()) continue;
    folders.append(folder);
    break;
  }
  const QString data = QStandardPaths::writableLocation(QStandardPaths::GenericDataLocation);
  if (!data.isEmpty()) folders.append(data + QStringLiteral("/tavril/strings"));
  return folders;
}

QString StringTables::languageFor(const QStringList &wanted, const QStringList &available) {
  for (const QString &language : wanted) {
    for (const QString &tag : tagsFor(language)) {
      for (const QString &candidate : available) {
        if (candidate.compare(tag, Qt::CaseInsensitive) == 0) return candidate;
      }
    }
  }
  return QStringLiteral("en");
}

QStringList StringTables::languages() const {
  QStringList codes;
  for (const auto &[language, texts] : tables_) codes.append(language);
  return codes;
}

bool StringTables::setLanguage(const QString &language) {
  if (!tables_.contains(language)) return false;
  language_ = language;
  return true;
}

const StringTable &StringTables::table(const QString &language) const {
  const auto found = tables_.find(language);
  return found == tables_.end() ? none_ : found->second;
}

void StringTables::readFolder(const QString &folder, const QString &suffix, Log &log) {
  const QDir directory(folder);
  const QStringList names = directory.entryList({u'*' + suffix}, QDir::Files | QDir::System, QDir::Name);
  for (const QString &name : names) {
    const QString path = directory.filePath(name);
    const QString language = name.chopped(suffix.size());
    if (!isLanguage(language)) {
      log.warn(QStringLiteral("%1: not named after a language").arg(path));
      continue;
    }
    QString problem;
    const QByteArray bytes = readTable(path, problem);
    if (!problem.isEmpty()) {
      log.warn(QStringLiteral("%1: %2").arg(path, problem));
      continue;
    }
    const StringTableFile file = StringTableFile::parse(bytes);
    for (const StringTableFile::Problem &fault : file.problems()) {
      log.warn(QStringLiteral("%1:%2: %3").arg(path).arg(fault.line).arg(fault.what));
    }
    tables_[language].add(file.entries());
  }
}

QString LanguageTexts::text(QStringView key) const {
  const QString name = key.toString();
  return texts_.value(name, name);
}

}  // namespace tavril
