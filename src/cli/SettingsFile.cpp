#include "cli/SettingsFile.h"

#include "cli/Failure.h"
#include "cli/Files.h"
#include "cli/RegisterFacts.h"

#include <QByteArray>

#include <string_view>

namespace tavril::cli {

namespace {

/// A document of all settings has less than two thousand bytes; this leaves room for any layout.
constexpr qint64 largestFile = 1 << 20;

QString asText(std::string_view utf8) {
  return QString::fromUtf8(utf8.data(), static_cast<qsizetype>(utf8.size()));
}

/// What to say behind the path.
QString saidOf(const records::SettingsFinding &finding) {
  using Kind = records::SettingsFinding::Kind;
  switch (finding.kind) {
    case Kind::NotJson:
      return QStringLiteral("not valid JSON: %1").arg(asText(finding.reason));
    case Kind::NotAnObject:
      return finding.path.empty() ? QStringLiteral("the document is not an object")
                                  : QStringLiteral("must be an object");
    case Kind::Missing:
      return QStringLiteral("is missing");
    case Kind::OtherFormat:
      return QStringLiteral("must be \"%1\"").arg(asText(records::settingsFormat));
    case Kind::OtherVersion:
      return QStringLiteral("must be %1").arg(records::settingsVersion);
    case Kind::UnknownKey:
      return QStringLiteral("is an unknown key");
    case Kind::Repeated:
      return QStringLiteral("is there twice");
    case Kind::NoSettings:
      return QStringLiteral("has no settings");
    case Kind::NotASetting:
      return QStringLiteral("is not a setting.") + suggestionFor(asText(finding.path).section(u'.', 1));
    case Kind::Measured:
      return QStringLiteral("is measured by the servo and cannot be set");
    case Kind::NoValue:
      return QStringLiteral("has no value");
    case Kind::NotANumber:
      return QStringLiteral("must be a number");
    case Kind::NotWhole:
      return QStringLiteral("must be a whole number");
    case Kind::OutOfRange:
      return QStringLiteral("%1 is out of range (%2)").arg(finding.value).arg(textOf(finding.row->range));
    case Kind::SameSetting:
      return QStringLiteral("names a setting that is there already");
    case Kind::OtherUnit:
      return QStringLiteral("is not \"%1\"; the value is taken as it is").arg(unitOf(*finding.row));
    case Kind::OtherRange:
      return QStringLiteral("is not [%1, %2]; the value is taken as it is")
          .arg(finding.row->range.minimum)
          .arg(finding.row->range.maximum);
  }
  return {};
}

}  // namespace

QStringList linesOf(const std::vector<records::SettingsFinding> &findings) {
  QStringList lines;
  for (const records::SettingsFinding &finding : findings) {
    QString line = QStringLiteral("%1:%2: ").arg(finding.place.line).arg(finding.place.column);
    if (!finding.path.empty()) {
      const bool isOfValue = finding.kind == records::SettingsFinding::Kind::OutOfRange;
      line += shown(asText(finding.path)) + (isOfValue ? QStringLiteral(": ") : QStringLiteral(" "));
    }
    lines.append(line + saidOf(finding));
  }
  return lines;
}

LoadedSettings loadSettings(const QString &path) {
  const records::CheckedSettings checked = records::checkSettings(readFile(path, largestFile).toStdString());
  const auto placed = [&](const std::vector<records::SettingsFinding> &findings) {
    QStringList lines = linesOf(findings);
    for (QString &line : lines) line.prepend(shown(path) + u':');
    return lines;
  };
  if (checked.problems.empty()) return {checked.settings, placed(checked.remarks)};
  QStringList lines = placed(checked.problems);
  lines.append(
      QStringLiteral("Nothing was done, because %1 is not a valid file of settings. \"tavrilctl dump\" "
                     "makes valid ones.")
          .arg(shown(path)));
  throw Failure{checked.onlyRanges() ? ExitCode::BadValue : ExitCode::Failed, lines.join(u'\n')};
}

}  // namespace tavril::cli
