#include "app/Report.h"

#include "app/ReadOutTexts.h"
#include "platform/JsonText.h"
#include "platform/Log.h"
#include "platform/MainQueue.h"
#include "protocol/SharedState.h"
#include "protocol/StatusLists.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "serial/line/SerialLine.h"
#include "servo/Servo.h"
#include "wire/Registers.h"

#include <QStringList>
#include <QStringView>

#include <algorithm>
#include <chrono>
#include <cstdint>
#include <utility>
#include <vector>

namespace tavril {

namespace {

using servo::Problem;
using std::chrono::seconds;

/// What stood in the line is read and gone before the first command goes out.
constexpr servo::Time settleTime = std::chrono::milliseconds(20);
constexpr servo::Time silence = seconds(readOutTexts::countdownSeconds);

struct Reading {
  QStringView name;
  QString value;          ///< as the screen shows it
  bool isNumber = false;  ///< or a text
};

Reading readingOf(const wire::Register &row, int value, Log &log) {
  switch (row.reply) {
    case wire::ReplyValue::ErrorBits:
      return {row.keys.name, itemsText(statusErrorList(value, log)), false};
    case wire::ReplyValue::DetailBits:
      return {row.keys.name, itemsText(statusDetailList(value, true, log)), false};
    default:
      return {row.keys.name, QString::number(value), true};
  }
}

QString tableOf(const std::vector<Reading> &readings) {
  const qsizetype widest =
      std::ranges::max(readings, {}, [](const Reading &r) { return r.name.size(); }).name.size();
  QString text;
  int number = 0;
  for (const Reading &reading : readings) {
    text += QStringLiteral("%1  %2  %3\n")
                .arg(QString::number(++number).rightJustified(2),
                     reading.name.toString().leftJustified(widest), reading.value);
  }
  return text;
}

QString jsonOf(const QString &portName, const std::vector<Reading> &readings) {
  QStringList registers;
  for (const Reading &reading : readings) {
    registers.append(QStringLiteral("    \"%1\": %2")
                         .arg(reading.name, reading.isNumber ? reading.value : jsonText(reading.value)));
  }
  return QStringLiteral("{\n  \"port\": %1,\n  \"registers\": {\n%2\n  }\n}\n")
      .arg(jsonText(portName), registers.join(QStringLiteral(",\n")));
}

/// "StatusError=(255, 7, 145, 16, 0, 0, 254)" for the reply to a read.
void logReply(const servo::Event &event, Log &log) {
  if (event.kind != servo::Event::Kind::Replied || !log.isEnabled()) return;
  const wire::Register *row = wire::findRegister(event.reply.registerNumber());
  if (!row) return;
  QStringList bytes;
  for (const std::uint8_t byte : event.reply.frame) bytes.append(QString::number(byte));
  const QStringView key = row->keys.value;
  log.write(key.first(key.indexOf(u'_')).toString() + u'=' + listText(bytes));
}

/// What to say of the problem. `silent`: where there was no answer.
QString textOf(const Problem &problem, const QString &portName, const QString &silent) {
  switch (problem.kind) {
    case Problem::Kind::Gone:
      return readOutTexts::removed(portName);
    case Problem::Kind::NotOneServo:
      return problem.count == servo::Count::None ? readOutTexts::noServo(portName)
                                                 : readOutTexts::severalServos(portName);
    default:
      return silent;
  }
}

}  // namespace

ReportOutcome reportOf(servo::Line &line, servo::Time startUp, const QString &portName, ReportFormat format,
                       Log &log) {
  bool isSomethingThere = false;
  const auto trace = [&](const servo::Event &event) {
    if (event.kind != servo::Event::Kind::Sent && event.kind != servo::Event::Kind::Silence)
      isSomethingThere = true;
    logReply(event, log);
  };
  const auto failed = [&](const Problem &problem, const QString &silent) {
    return ReportOutcome{false, textOf(problem, portName, silent)};
  };
  if (const auto problem = servo::problemOf(line.pause(startUp + settleTime))) return failed(*problem, {});

  // The bridge is not asked again while nothing comes, for a boot loader may listen.
  const servo::Time end = line.now() + silence;
  servo::Outcome<servo::Done> detected = servo::Servo(line, {silence, 0}, trace).expectOne();
  if (!detected && isSomethingThere && detected.problem().kind != Problem::Kind::NotOneServo) {
    // It may be the bridge. The question is repeated if the bridge can be read from.
    const auto newServo = [&] { return servo::Servo(line, {seconds(10), 0}, trace); };
    servo::Outcome<int> first = newServo().read(wire::registers.front());
    // An error report comes at once, and the next answer may be none.
    while (!first && first.problem().kind == Problem::Kind::ErrorReport && line.now() < end) {
      line.pause(seconds(1));
      first = newServo().read(wire::registers.front());
    }
    if (first) {
      detected = newServo().expectOne();
      if (!detected) return failed(detected.problem(), readOutTexts::notDetected(portName));
    } else if (first.problem().kind == Problem::Kind::Gone) {
      detected = first.problem();
    }
  }
  if (!detected) return failed(detected.problem(), readOutTexts::silent(portName));

  servo::Servo servo(line, {silence / 3, 2}, trace);
  std::vector<Reading> readings;
  for (const wire::Register &row : wire::registers) {
    const servo::Outcome<int> value = servo.read(row);
    if (!value) {
      return failed(value.problem(), readOutTexts::stopped(portName, static_cast<int>(readings.size())));
    }
    readings.push_back(readingOf(row, *value, log));
  }
  return {true, format == ReportFormat::Json ? jsonOf(portName, readings) : tableOf(readings)};
}

Report::Report(SharedState &state, const SerialEnvironment &serial, servo::Time startUp, ReportFormat format,
               Finished finished)
    : state_(state),
      serial_(serial),
      startUp_(startUp),
      format_(format),
      finished_(std::make_shared<const Finished>(std::move(finished))) {}

Report::~Report() {
  if (line_) line_->cancel();
  if (worker_.joinable()) worker_.join();
  if (port_) port_->close();
}

void Report::start() {
  if (state_.allSerialPortsInfo.empty()) {
    (*finished_)({false, readOutTexts::noPort()});
    return;
  }
  port_ = state_.allSerialPortsInfo.front();
  line_ = SerialLine::open(serial_.background, serial_.log, port_);
  if (!port_->isOpen()) {
    (*finished_)({false, readOutTexts::notOpened(*port_, line_->lastError().get())});
    return;
  }
  worker_ = std::thread([this, portName = port_->name()] {
    const ReportOutcome outcome = reportOf(*line_, startUp_, portName, format_, serial_.log);
    serial_.mainQueue.async([finished = std::weak_ptr(finished_), outcome] {
      if (const auto call = finished.lock()) (*call)(outcome);
    });
  });
}

}  // namespace tavril
