#include "app/CommandLine.h"

#include <QCommandLineOption>
#include <QCommandLineParser>

namespace tavril {

namespace {

constexpr int usageError = 2;

const QString examples = QStringLiteral(
    "\nExamples:\n"
    "  tavril --demo                        try the editor without any hardware\n"
    "  tavril --connect                     open the editor and connect to the only USB port\n"
    "  tavril --port /dev/ttyUSB0           open the editor with this port first in its list\n"
    "  tavril --report --json > servo.json  save the registers of the servo at the first USB port\n"
    "  TAVRIL_LOG=1 tavril                  log the bytes that are sent and received\n"
    "\nIf the editor is already open, its window comes to the front and no other one opens.\n"
    "The user guide is in the Help menu. For scripts there is tavrilctl, see \"tavrilctl --help\".\n");

}  // namespace

QString CommandLine::forOwnWindow() const {
  if (!ports.isEmpty()) return QStringLiteral("--port");
  if (demo) return QStringLiteral("--demo");
  if (connect) return QStringLiteral("--connect");
  if (!language.isEmpty()) return QStringLiteral("--language");
  return {};
}

bool CommandLine::knowsItsPort(std::size_t listedPorts) const {
  return demo || ports.size() == 1 || listedPorts == 1;
}

CommandLine CommandLine::parse(const QStringList &arguments, const QString &version) {
  QCommandLineParser parser;
  parser.setApplicationDescription(
      QStringLiteral("Configures and tests one intelligent servo over a USB serial link."));
  const QCommandLineOption demo(
      QStringLiteral("demo"),
      QStringLiteral("Use the built-in virtual servo. The window connects to it by itself."));
  const QCommandLineOption connect(
      QStringLiteral("connect"),
      QStringLiteral("Connect when the window has opened: to the port that --port names, or to the only USB "
                     "port. If there are more, or none, open the port dialog."));
  const QCommandLineOption port(
      QStringLiteral("port"),
      QStringLiteral("Put the terminal at <path> first in the port list. Repeatable."),
      QStringLiteral("path"));
  const QCommandLineOption language(
      QStringLiteral("language"),
      QStringLiteral(
          "Use this string table in this run, such as en or zh-Hant. By default, Tavril uses the language "
          "that was chosen in the menu, else the system's language, else English."),
      QStringLiteral("language"));
  const QCommandLineOption report(
      QStringLiteral("report"),
      QStringLiteral("No window: connect to the first port, print all registers, and exit."));
  const QCommandLineOption json(QStringLiteral("json"), QStringLiteral("With --report: print JSON."));
  const QCommandLineOption snapshot(
      QStringLiteral("snapshot"),
      QStringLiteral("Open the window, connect to the first port, save a picture as <file>, and exit."),
      QStringLiteral("file.png"));
  const QCommandLineOption showVersion({QStringLiteral("v"), QStringLiteral("version")},
                                       QStringLiteral("Print the version and exit."));
  const QCommandLineOption help({QStringLiteral("h"), QStringLiteral("help")},
                                QStringLiteral("Print this help and exit."));
  parser.addOptions({demo, connect, port, language, report, json, snapshot, showVersion, help});

  CommandLine line;
  const auto usage = [&](const QString &problem) {
    line.answer = Answer{problem + QStringLiteral(" \"tavril --help\" lists the options."), usageError};
  };
  if (!parser.parse(arguments)) {
    usage(parser.errorText());
    return line;
  }
  if (parser.isSet(help)) {
    // Qt asks the application object for the program's name, and there is none yet.
    const QString text =
        parser.helpText().replace(QStringLiteral("<executable_name>"), QStringLiteral("tavril"));
    line.answer = Answer{text + examples, 0};
    return line;
  }
  if (parser.isSet(showVersion)) {
    line.answer = Answer{QStringLiteral("tavril ") + version + u'\n', 0};
    return line;
  }
  line.demo = parser.isSet(demo);
  line.connect = parser.isSet(connect);
  line.report = parser.isSet(report);
  line.format = parser.isSet(json) ? ReportFormat::Json : ReportFormat::Table;
  line.ports = parser.values(port);
  line.language = parser.value(language);
  line.snapshot = parser.value(snapshot);
  if (!parser.positionalArguments().isEmpty()) {
    usage(QStringLiteral("\"%1\" is not an option.").arg(parser.positionalArguments().constFirst()));
  } else if (line.demo && !line.ports.isEmpty()) {
    usage(QStringLiteral(
        "--demo and --port cannot be used together: --demo is the virtual servo, --port a real one."));
  } else if (parser.isSet(json) && !line.report) {
    usage(QStringLiteral("--json needs --report."));
  } else if (parser.isSet(snapshot) && line.report) {
    usage(QStringLiteral(
        "--snapshot and --report cannot be used together: --snapshot needs the window, --report has none."));
  } else if (line.connect && (line.report || parser.isSet(snapshot))) {
    usage(QStringLiteral("--connect is for the window: --report and --snapshot connect by themselves."));
  } else if (parser.isSet(snapshot) && line.snapshot.isEmpty()) {
    usage(QStringLiteral("--snapshot needs the name of a file, such as tavril.png."));
  } else if (line.ports.contains(QString())) {
    usage(QStringLiteral("--port needs the path of a terminal, such as /dev/ttyUSB0."));
  }
  return line;
}

}  // namespace tavril
