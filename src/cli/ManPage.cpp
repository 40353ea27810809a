#include "cli/ManPage.h"

#include "cli/CommandBook.h"
#include "cli/RegisterFacts.h"
#include "protocol/RegisterCatalogue.h"

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

QString registerTable() {
  QString text;
  for (const RegisterRow &row : registerCatalogue()) {
    QString facts = row.isSetting() ? settingRange(row).text() : QStringLiteral("read only");
    if (!unitOf(row).isEmpty()) facts += QStringLiteral(", in ") + unitOf(row);
    text += QStringLiteral(".TP\n%1\n%2\n")
                .arg(plain(QString::number(row.number)) + u' ' + bold(row.nameKey.toString()), plain(facts));
  }
  return text;
}

}  // namespace

QString manPage(const CommandBook &book) {
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
  text += QStringLiteral(".SH OPTIONS\nThese go with every command, before it or behind it.\n");
  for (const OptionEntry &option : book.commonOptions) text += entry(option);
  text += QStringLiteral(".SH COMMANDS\n");
  for (const CommandEntry &command : book.commands) {
    text += QStringLiteral(".SS %1\n%2\n").arg(synopsisOf(command), plain(command.description));
    for (const OptionEntry &option : command.options) {
      if (!option.names.contains(QStringLiteral("--help"))) text += entry(option);
    }
  }
  text += QStringLiteral(".SH REGISTERS\n") + registerTable();
  text += QStringLiteral(".SH EXAMPLES\n");
  for (const Example &example : book.examples) {
    text += QStringLiteral(".TP\n%1\n%2\n").arg(bold(example.command), plain(example.purpose));
  }
  const QStringList lines = book.exitStatus.split(u'\n', Qt::SkipEmptyParts);
  text += QStringLiteral(".SH EXIT STATUS\n.nf\n");
  for (const QString &line : lines.mid(1)) text += plain(line.trimmed()) + u'\n';
  text += QStringLiteral(".fi\n.SH SEE ALSO\n%1(1), %2(1)\n")
              .arg(bold(QStringLiteral("tavril")), bold(QStringLiteral("tavril-servo")));
  return text;
}

}  // namespace tavril::cli
