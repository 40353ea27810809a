#include "cli/SettingsFile.h"

#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/JsonPlaces.h"
#include "cli/JsonText.h"
#include "cli/RegisterFacts.h"

#include <QJsonArray>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QJsonValue>

#include <QLatin1Char>
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
      complain(QString(), QStringLiteral("the document is not an object"));
    } else {
      checkWhole(document.object());
    }
    result_.problems = inOrder(found_);
    result_.remarks = inOrder(remarks_);
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
      const wire::Register *row = registerNamed(it.key());
      // A file has the keys themselves, as it is made by a program; numbers and capitals are for people.
      if (!row || !isKeyOf(*row, it.key())) {
        complain(path, QStringLiteral("is not a setting.") + suggestionFor(it.key()));
      } else if (!row->isSetting()) {
        complain(path, QStringLiteral("is measured by the servo and cannot be set"));
      } else {
        checkSetting(*row, path, it.value());
      }
    }
  }

  void checkSetting(const wire::Register &row, const QString &path, const QJsonValue &setting) {
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
    // For people to read. An older Tavril may have known less; the value is what counts.
    if (members.contains(unit) && members[unit] != QJsonValue(unitOf(row))) {
      remark(path + u'.' + unit,
             QStringLiteral("is not \"%1\"; the value is taken as it is").arg(unitOf(row)));
    }
    const wire::Range known = row.range;
    if (members.contains(range) && members[range] != QJsonValue(QJsonArray{known.minimum, known.maximum})) {
      remark(path + u'.' + range, QStringLiteral("is not [%1, %2]; the value is taken as it is")
                                      .arg(known.minimum)
                                      .arg(known.maximum));
    }
  }

  void checkValue(const wire::Register &row, const QString &path, const QJsonValue &value) {
    const std::optional<int> number = integerOf(value);
    if (!number) {
      complain(path, value.isDouble() ? QStringLiteral("must be a whole number")
                                      : QStringLiteral("must be a number"));
      return;
    }
    const wire::Range range = row.range;
    if (!range.contains(*number)) {
      complain(path, QStringLiteral("%1 is out of range (%2)").arg(*number).arg(textOf(range)));
      ++ranges_;
      return;
    }
    if (!result_.settings.emplace(row.number, *number).second) {
      complain(path, QStringLiteral("names a setting that is there already"));
    }
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

  static QStringList inOrder(std::vector<Problem> problems) {
    std::ranges::stable_sort(problems, [](const Problem &one, const Problem &other) {
      return std::tie(one.place.line, one.place.column) < std::tie(other.place.line, other.place.column);
    });
    QStringList lines;
    for (const Problem &problem : problems) {
      lines.append(QStringLiteral("%1:%2: ").arg(problem.place.line).arg(problem.place.column) +
                   problem.text);
    }
    return lines;
  }

  void remark(const QString &path, const QString &text) {
    remarks_.push_back({places_.of(path), shown(path) + u' ' + text});
  }
  void complain(const QString &path, const QString &problem) { complain(places_.of(path), path, problem); }
  void complain(const TextPlace &place, const QString &path, const QString &problem) {
    const QString named =
        path.isEmpty() ? problem
                       : shown(path) + QString::fromLatin1(problem[0].isLetter() ? " " : ": ") + problem;
    found_.push_back({place, named});
  }

  const JsonPlaces places_;
  std::vector<Problem> found_;
  std::vector<Problem> remarks_;
  CheckedSettings result_;
  qsizetype ranges_ = 0;
};

}  // namespace

QByteArray settingsText(const Settings &settings) {
  QStringList rows;
  for (const auto &[number, value] : settings) {
    const wire::Register &row = *wire::findRegister(number);
    const wire::Range range = row.range;
    rows.append(QStringLiteral("    %1: {\"value\": %2, \"unit\": %3, \"range\": [%4, %5]}")
                    .arg(jsonText(keyOf(row)), QString::number(value), jsonText(unitOf(row)),
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
      QStringLiteral("%1:%2: not valid JSON: %3").arg(place.line).arg(place.column).arg(error.errorString()));
  return result;
}

LoadedSettings loadSettings(const QString &path) {
  const CheckedSettings checked = checkSettings(readFile(path, largestFile));
  const auto placed = [&](const QStringList &texts) {
    QStringList lines;
    for (const QString &text : texts) lines.append(shown(path) + u':' + text);
    return lines;
  };
  if (checked.problems.isEmpty()) return {checked.settings, placed(checked.remarks)};
  QStringList lines = placed(checked.problems);
  lines.append(
      QStringLiteral("Nothing was done, because %1 is not a valid file of settings. \"tavrilctl dump\" "
                     "makes valid ones.")
          .arg(shown(path)));
  throw Failure{checked.onlyRanges ? ExitCode::BadValue : ExitCode::Failed, lines.join(u'\n')};
}

}  // namespace tavril::cli
