#include "cli/SettingsFile.h"

#include "cli/Failure.h"
#include "cli/JsonPlaces.h"
#include "cli/JsonText.h"
#include "cli/RegisterFacts.h"

#include <QFile>
#include <QFileInfo>
#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QSaveFile>

#include <algorithm>
#include <cmath>
#include <optional>
#include <tuple>
#include <vector>

namespace tavril::cli {

namespace {

const QString &formatName() {
  static const QString name = QStringLiteral("tavril-servo-settings");
  return name;
}

constexpr int formatVersion = 1;
/// A document of all settings has less than two thousand bytes; this leaves room for any layout.
constexpr qint64 largestFile = 1 << 20;

std::optional<int> integerOf(const QJsonValue &value) {
  if (!value.isDouble()) return std::nullopt;
  const double number = value.toDouble();
  constexpr double limit = 2147483647.0;
  if (number != std::floor(number) || std::abs(number) > limit) return std::nullopt;
  return static_cast<int>(number);
}

/// The name as one line of a terminal may show it. A file from elsewhere could have line ends in its keys,
/// the codes with which terminals are told what to do, or half of a character.
QString printable(const QString &name) {
  QString shown;
  for (qsizetype at = 0; at < name.size(); ++at) {
    const QChar unit = name[at];
    const bool isPair = unit.isHighSurrogate() && at + 1 < name.size() && name[at + 1].isLowSurrogate();
    const char32_t character = isPair ? QChar::surrogateToUcs4(unit, name[at + 1]) : unit.unicode();
    if (QChar::isPrint(character)) {
      shown += QStringView(name).mid(at, isPair ? 2 : 1);
    } else {
      shown += QStringLiteral("\\u%1").arg(uint{character}, 4, 16, QLatin1Char('0'));
    }
    if (isPair) ++at;
  }
  return shown;
}

struct Problem {
  TextPlace place;
  QString text;
};

/// One pass over one document.
class Checker {
 public:
  explicit Checker(const QByteArray &document) : places_(document) {}

  CheckedSettings check(const QJsonDocument &document) {
    for (const JsonPlaces::Member &member : places_.repeated()) {
      complain(member.place, member.path, QStringLiteral("is there twice"));
    }
    if (!document.isObject()) {
      complain(QString(), QStringLiteral("the document is no object"));
    } else {
      checkWhole(document.object());
    }
    std::ranges::stable_sort(found_, [](const Problem &one, const Problem &other) {
      return std::tie(one.place.line, one.place.column) < std::tie(other.place.line, other.place.column);
    });
    for (const Problem &problem : found_) {
      result_.problems.append(QStringLiteral("%1:%2: ").arg(problem.place.line).arg(problem.place.column) +
                              problem.text);
    }
    result_.onlyRanges = ranges_ > 0 && ranges_ == result_.problems.size();
    if (!result_.problems.isEmpty()) result_.settings.clear();
    return result_;
  }

 private:
  void checkWhole(const QJsonObject &whole) {
    expectKeys(whole, QString(),
               {QStringLiteral("format"), QStringLiteral("version"), QStringLiteral("settings")});
    require(whole, QStringLiteral("format"), QJsonValue(formatName()));
    require(whole, QStringLiteral("version"), QJsonValue(formatVersion));
    const QString key = QStringLiteral("settings");
    if (!whole.contains(key)) {
      complain(key, QStringLiteral("is missing"));
    } else if (!whole[key].isObject()) {
      complain(key, QStringLiteral("must be an object"));
    } else {
      checkSettingsObject(whole[key].toObject());
    }
  }

  void checkSettingsObject(const QJsonObject &settings) {
    if (settings.isEmpty()) complain(QStringLiteral("settings"), QStringLiteral("has no settings"));
    for (auto it = settings.begin(); it != settings.end(); ++it) {
      const QString path = QStringLiteral("settings.") + it.key();
      const RegisterRow *row = registerNamed(it.key());
      // A file has the keys themselves, as it is made by a program; numbers and other spellings are for
      // people.
      if (!row || row->nameKey != it.key()) {
        complain(path, QStringLiteral("is no setting"));
      } else if (!row->isSetting()) {
        complain(path, QStringLiteral("is a live value, which cannot be set"));
      } else {
        checkSetting(*row, path, it.value());
      }
    }
  }

  void checkSetting(const RegisterRow &row, const QString &path, const QJsonValue &setting) {
    if (!setting.isObject()) {
      checkValue(row, path, setting);
      return;
    }
    const QJsonObject members = setting.toObject();
    const QString value = QStringLiteral("value");
    const QString unit = QStringLiteral("unit");
    const QString range = QStringLiteral("range");
    expectKeys(members, path + u'.', {value, unit, range});
    if (members.contains(value)) {
      checkValue(row, path + u'.' + value, members[value]);
    } else {
      complain(path, QStringLiteral("has no value"));
    }
    // For people to read; a file in which they are others was not made for this servo.
    if (members.contains(unit) && members[unit] != QJsonValue(unitOf(row))) {
      complain(path + u'.' + unit, QStringLiteral("must be \"%1\"").arg(unitOf(row)));
    }
    const ValueRange known = settingRange(row);
    if (members.contains(range) && members[range] != QJsonValue(QJsonArray{known.minimum, known.maximum})) {
      complain(path + u'.' + range, QStringLiteral("must be [%1, %2]").arg(known.minimum).arg(known.maximum));
    }
  }

  void checkValue(const RegisterRow &row, const QString &path, const QJsonValue &value) {
    const std::optional<int> number = integerOf(value);
    if (!number) {
      complain(path, value.isDouble() ? QStringLiteral("must be a whole number")
                                      : QStringLiteral("must be a number"));
      return;
    }
    const ValueRange range = settingRange(row);
    if (!range.contains(*number)) {
      complain(path, QStringLiteral("%1 is out of range (%2)").arg(*number).arg(range.text()));
      ++ranges_;
      return;
    }
    result_.settings[row.number] = *number;
  }

  void expectKeys(const QJsonObject &object, const QString &prefix, const QStringList &known) {
    for (const QString &key : object.keys()) {
      if (!known.contains(key)) complain(prefix + key, QStringLiteral("is an unknown key"));
    }
  }

  void require(const QJsonObject &whole, const QString &key, const QJsonValue &wanted) {
    if (!whole.contains(key)) {
      complain(key, QStringLiteral("is missing"));
    } else if (whole[key] != wanted) {
      const QString text = wanted.isString() ? jsonText(wanted.toString()) : QString::number(wanted.toInt());
      complain(key, QStringLiteral("must be %1").arg(text));
    }
  }

  void complain(const QString &path, const QString &problem) { complain(places_.of(path), path, problem); }
  void complain(const TextPlace &place, const QString &path, const QString &problem) {
    const QString named =
        path.isEmpty() ? problem
                       : printable(path) + QString::fromLatin1(problem[0].isLetter() ? " " : ": ") + problem;
    found_.push_back({place, named});
  }

  const JsonPlaces places_;
  std::vector<Problem> found_;
  CheckedSettings result_;
  qsizetype ranges_ = 0;
};

}  // namespace

QByteArray settingsText(const Settings &settings) {
  QStringList rows;
  for (const auto &[number, value] : settings) {
    const RegisterRow &row = *findRegister(number);
    const ValueRange range = settingRange(row);
    rows.append(QStringLiteral("    %1: {\"value\": %2, \"unit\": %3, \"range\": [%4, %5]}")
                    .arg(jsonText(row.nameKey.toString()), QString::number(value), jsonText(unitOf(row)),
                         QString::number(range.minimum), QString::number(range.maximum)));
  }
  return QStringLiteral("{\n  \"format\": %1,\n  \"version\": %2,\n  \"settings\": {\n%3\n  }\n}\n")
      .arg(jsonText(formatName()), QString::number(formatVersion), rows.join(QStringLiteral(",\n")))
      .toUtf8();
}

CheckedSettings checkSettings(const QByteArray &document) {
  QJsonParseError error{};
  const QJsonDocument parsed = QJsonDocument::fromJson(document, &error);
  if (error.error == QJsonParseError::NoError) return Checker(document).check(parsed);
  const TextPlace place = placeOf(document, error.offset);
  CheckedSettings result;
  result.problems.append(
      QStringLiteral("%1:%2: no JSON: %3").arg(place.line).arg(place.column).arg(error.errorString()));
  return result;
}

Settings loadSettings(const QString &path) {
  QFile file(path);
  const QFileInfo info(path);
  // Asked first, because a pipe or a device would be waited for.
  if (info.exists() && !info.isFile()) {
    throw Failure{ExitCode::Failed,
                  QStringLiteral("%1 is no file that could be read: name one that dump has made.").arg(path)};
  }
  if (!file.open(QIODevice::ReadOnly)) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("%1 could not be read: %2. Check who may read it.").arg(path, file.errorString())};
  }
  const QByteArray document = file.read(largestFile + 1);
  if (document.size() > largestFile) {
    throw Failure{
        ExitCode::Failed,
        QStringLiteral("%1 is too large to be a file of settings: name one that dump has made.").arg(path)};
  }
  const CheckedSettings checked = checkSettings(document);
  if (checked.problems.isEmpty()) return checked.settings;
  QStringList lines;
  for (const QString &problem : checked.problems) lines.append(path + u':' + problem);
  lines.append(
      QStringLiteral("%1 is no good, so nothing was done: \"tavrilctl dump\" makes files as they must be.")
          .arg(path));
  throw Failure{checked.onlyRanges ? ExitCode::BadValue : ExitCode::Failed, lines.join(u'\n')};
}

void expectNewFile(const QString &path, bool mayReplace) {
  const QFileInfo info(path);
  if (info.isDir()) throw Failure{ExitCode::Failed, QStringLiteral("%1 is a folder: name a file.").arg(path)};
  if (mayReplace || !(info.exists() || info.isSymLink())) return;
  throw Failure{
      ExitCode::Failed,
      QStringLiteral("%1 is there already: name another file, or replace it with --force.").arg(path)};
}

void saveFile(const QString &path, const QByteArray &content, bool mayReplace) {
  QSaveFile file(path);
  const auto fail = [&] {
    throw Failure{ExitCode::Failed,
                  QStringLiteral("%1 could not be written: %2. Name a file in a folder that you "
                                 "may write to.")
                      .arg(path, file.errorString())};
  };
  if (!file.open(QIODevice::WriteOnly)) fail();
  file.write(content);
  // Once more, for it may have come into being while the servo was read.
  expectNewFile(path, mayReplace);
  if (!file.commit()) fail();
}

}  // namespace tavril::cli
