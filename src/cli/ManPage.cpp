#include "cli/ManPage.h"

#include "cli/CommandBook.h"
#include "cli/RegisterFacts.h"
#include "wire/Range.h"

#include <QStringList>
#include <QStringView>

namespace tavril::cli {

namespace {

/// Text as troff shows it unchanged.
QString plain(QString text) {
  text.replace(u'\\', QStringLiteral("\\e"));
  text.replace(u'-', QStringLiteral("\\-"));
  text.replace(QStringLiteral("°"), QStringLiteral("\\(de"));
  // A line that begins so would be taken for a request.
  if (text.startsWith(u'.') || text.startsWith(u'\'')) text.prepend(QStringLiteral("\\&"));
  return text;
}

QString bold(const QString &text) {
  return QStringLiteral("\\fB%1\\fR").arg(plain(text));
}

QString italic(const QString &text) {
  return QStringLiteral("\\fI%1\\fR").arg(plain(text));
}

QString entry(const OptionEntry &option) {
  QString head;
  for (const QString &name : option.names) {
    if (!head.isEmpty()) head += QStringLiteral(", ");
    head += bold(name);
  }
  if (!option.value.isEmpty())
    head += (head.isEmpty() ? QString() : QStringLiteral(" ")) + italic(option.value);
  return QStringLiteral(".TP\n%1\n%2\n").arg(head, plain(option.description));
}

QString synopsisOf(const CommandEntry &command) {
  QString text = bold(command.name);
  for (const OptionEntry &option : command.options) {
    if (option.names.contains(QStringLiteral("--help"))) continue;
    QString part = option.isOperand() ? QString() : bold(option.names.back());
    if (!option.value.isEmpty())
      part += (part.isEmpty() ? QString() : QStringLiteral(" ")) + italic(option.value);
    if (option.repeated) part += QStringLiteral(" ...");
    text += option.required ? u' ' + part : QStringLiteral(" [") + part + u']';
  }
  return text;
}

/// What the virtual servo has in the register at first; "-" for what it measures.
QString defaultOf(const wire::Register &row, std::span<const int> defaults) {
  const auto index = static_cast<std::size_t>(row.number) - 1;
  return index < defaults.size() ? QString::number(defaults[index]) : QStringLiteral("-");
}

/// "; 0: keeps the torque; 1: shuts down"
QString choicesText(const wire::Register &row) {
  const QStringList choices = choicesOf(row);
  QString text;
  for (qsizetype i = 0; i < choices.size(); ++i) text += QStringLiteral("; %1: %2").arg(i).arg(choices[i]);
  return text;
}

QString registerTable(std::span<const int> defaults) {
  QString text;
  for (const wire::Register &row : wire::registers) {
    QString facts = QStringLiteral("%1; %2").arg(row.meaning, rangeText(row));
    if (!row.unit.step.empty()) facts += QStringLiteral(", in ") + unitOf(row);
    const QString value = defaultOf(row, defaults);
    if (value != u"-") facts += QStringLiteral("; default of the virtual servo: ") + value;
    facts += choicesText(row);
    text += QStringLiteral(".TP\n%1\n%2\n")
                .arg(plain(QString::number(row.number)) + u' ' + bold(keyOf(row)), plain(facts));
  }
  return text;
}

/// What a reader of the help needs besides. %1: positions in a degree.
constexpr const char *topics =
    ".SH WRITING\n"
    "Values are written in this order: limits that become wider, limits that become narrower, check periods, "
    "gains, calibration angle, torque policy, LED policy, sid, and ack_policy last.\n"
    ".PP\n"
    "Values that may do harm are written only with \\fB\\-\\-force\\fR, by send only with "
    "\\fB\\-\\-yes\\fR: ack_policy=0, a highest temperature, voltage or load of 0, and, except for send, "
    "min_voltage above max_voltage and a limit that the present value exceeds.\n"
    ".PP\n"
    "A degree has %1 positions.\n"
    ".SH SEVERAL COMMANDS\n"
    "A file for run has one command on each line, without tavrilctl and without the common options. "
    "# begins a comment. Quotation marks and backslashes are as in a shell.\n"
    ".SH JSON\n"
    "A register is an object with number, value, scaled (null without a known unit), unit and meaning.\n"
    ".TP\nread\n{\"port\", \"registers\": {KEY: register}}\n"
    ".TP\nwrite, set\\-id, restore\n{\"port\", \"changes\": {KEY: {\"from\": register, \"to\": register}}}\n"
    ".TP\nwrite, set\\-id with \\-\\-dry\\-run\n[{\"sent\", \"meaning\"}]\n"
    ".TP\ndiff\n{\"compared\": [NAME, NAME], \"differences\": {KEY: [register, register]}}\n"
    ".TP\nposition, move \\-\\-wait, stop\n{\"port\", \"position\", \"degrees\"}\n"
    ".TP\nmonitor\non each line {\"time\", \"position\", \"degrees\", \"registers\": {KEY: register}}\n"
    ".TP\ndetect\n{\"port\", \"servos\"}: \"none\", \"one\" or \"several\"\n"
    ".TP\nsend\n{\"port\", \"sent\", \"reply\", \"meaning\"}\n"
    ".TP\nports, doctor\nan array with an object for each port or check\n"
    ".SH FILES\n"
    ".TP\n~/.local/state/tavril/history\n"
    "The history of the shell; below XDG_STATE_HOME if that is set.\n";

}  // namespace

QString registerListInMarkdown(std::span<const int> defaults) {
  QString text = QStringLiteral(
      "| Number | Key | Meaning | Range | Unit | Virtual servo |\n|---|---|---|---|---|---|\n");
  for (const wire::Register &row : wire::registers) {
    text += QStringLiteral("| %1 | `%2` | %3%4 | %5 | %6 | %7 |\n")
                .arg(QString::number(row.number), keyOf(row), QStringView(row.meaning), choicesText(row),
                     rangeText(row), row.unit.step.empty() ? QStringLiteral("-") : unitOf(row),
                     defaultOf(row, defaults));
  }
  return text;
}

QString manPage(const CommandBook &book, std::span<const int> defaults) {
  QString text =
      QStringLiteral(
          ".\\\" Made by \"%1 --generate man\".\n"
          ".TH %2 1 \"\" \"Tavril %3\" \"User Commands\"\n"
          ".SH NAME\n%4 \\- sets up one intelligent servo behind a USB serial bridge\n"
          ".SH SYNOPSIS\n%5 [%6]... %7 [%8]...\n"
          ".SH DESCRIPTION\n%9\n")
          .arg(book.program, book.program.toUpper(), plain(book.version), plain(book.program),
               bold(book.program), italic(QStringLiteral("OPTION")), italic(QStringLiteral("COMMAND")),
               italic(QStringLiteral("ARGUMENT")), plain(book.description));
  text += QStringLiteral(".SH OPTIONS\nThese options can stand before or after any command.\n");
  for (const OptionEntry &option : book.commonOptions) text += entry(option);
  text += QStringLiteral(".SH COMMANDS\n");
  for (const CommandEntry &command : book.commands) {
    text += QStringLiteral(".SS %1\n%2\n").arg(synopsisOf(command), plain(command.description));
    for (const OptionEntry &option : command.options) {
      if (!option.names.contains(QStringLiteral("--help"))) text += entry(option);
    }
  }
  text += QStringLiteral(
              ".SH REGISTERS\n"
              "The settings of a real servo show after a reset.\n") +
          registerTable(defaults);
  text += QString::fromUtf8(topics).arg(QString::number(wire::positionsPerDegree));
  text += QStringLiteral(".SH EXAMPLES\n");
  for (const Example &example : book.examples) {
    text += QStringLiteral(".TP\n%1\n%2\n").arg(bold(example.command), plain(example.purpose));
  }
  const QStringList lines = book.exitStatus.split(u'\n', Qt::SkipEmptyParts);
  text += QStringLiteral(".SH EXIT STATUS\n.nf\n");
  for (const QString &line : lines.mid(1)) text += plain(line.trimmed()) + u'\n';
  text += QStringLiteral(".fi\n.SH ENVIRONMENT\n.nf\n");
  const QStringList variables = book.environment.split(u'\n', Qt::SkipEmptyParts);
  for (const QString &line : variables.mid(1)) text += plain(line.trimmed()) + u'\n';
  text += QStringLiteral(".fi\n.SH SEE ALSO\n%1(1), %2(1)\n")
              .arg(bold(QStringLiteral("tavril")), bold(QStringLiteral("tavril-servo")));
  return text;
}

}  // namespace tavril::cli
