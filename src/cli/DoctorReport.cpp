#include "cli/DoctorReport.h"

#include "doctor/ResultTexts.h"
#include "platform/JsonText.h"

#include <QStringList>

#include <algorithm>
#include <utility>

namespace tavril::cli {

namespace {

constexpr int stateWidth = 9;
constexpr int nameWidth = 15;

QString padded(const QString &text, int width) {
  return text.leftJustified(width);
}

}  // namespace

QString doctorLines(const doctor::Result &result, const StringTable &strings) {
  const doctor::ResultTexts texts = doctor::ResultTexts::of(result, strings);
  const QString state = nameOf(result.state);
  const QString margin(stateWidth + nameWidth, u' ');
  QString lines = padded(result.state == doctor::State::Failed ? state.toUpper() : state, stateWidth) +
                  padded(nameOf(result.check), nameWidth) + texts.finding + u'\n';
  if (!texts.advice.isEmpty()) lines += margin + texts.advice + u'\n';
  if (!result.command.isEmpty()) lines += margin + QStringLiteral("$ ") + result.command + u'\n';
  return lines;
}

QString doctorJson(const std::vector<doctor::Result> &results, const StringTable &strings) {
  QStringList rows;
  for (const doctor::Result &result : results) {
    const doctor::ResultTexts texts = doctor::ResultTexts::of(result, strings);
    const std::pair<const char *, QString> members[]{
        {"check", nameOf(result.check)}, {"state", nameOf(result.state)}, {"finding", result.finding},
        {"text", texts.finding},         {"advice", texts.advice},        {"command", result.command}};
    QStringList pairs;
    for (const auto &[name, value] : members)
      pairs.append(jsonText(QString::fromLatin1(name)) + QStringLiteral(": ") + jsonText(value));
    rows.append(QStringLiteral("  {") + pairs.join(QStringLiteral(", ")) + u'}');
  }
  return QStringLiteral("[\n") + rows.join(QStringLiteral(",\n")) + QStringLiteral("\n]\n");
}

ExitCode doctorStatus(const std::vector<doctor::Result> &results) {
  const auto failed = std::ranges::find(results, doctor::State::Failed, &doctor::Result::state);
  if (failed == results.end()) return ExitCode::Done;
  switch (failed->check) {
    case doctor::CheckId::Reply:
    case doctor::CheckId::Frame:
      return ExitCode::Failed;
    case doctor::CheckId::Servo:
      return ExitCode::NoServo;
    default:
      return ExitCode::NoPort;
  }
}

}  // namespace tavril::cli
