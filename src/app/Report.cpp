#include "app/Report.h"

#include "app/AppDelegate.h"
#include "app/OpenFailure.h"
#include "platform/Desktop.h"
#include "platform/StringTable.h"
#include "platform/Timers.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "serial/SerialPort.h"

#include <QJsonArray>
#include <QJsonDocument>

#include <algorithm>
#include <array>
#include <utility>

namespace tavril {

namespace {

constexpr std::chrono::milliseconds updateInterval{10};
constexpr std::chrono::seconds countdownInterval{1};

constexpr std::array otherElements{u"TXcmd", u"RXcmd", u"errormsg", u"ConnectStatus",
                                   u"ContrainerView_WaitView"};

/// The text as JSON. The report is put together by hand because Qt's objects sort their keys, and registers
/// are read in the order of their numbers.
QString jsonString(const QString &text) {
  const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
  return QString::fromUtf8(array.mid(1, array.size() - 2));
}

}  // namespace

Report::Report(SharedState &state, AppDelegate &application, const Desktop &desktop, ReportFormat format,
               Finished finished)
    : state_(state),
      application_(application),
      desktop_(desktop),
      format_(format),
      finished_(std::move(finished)) {
  for (const RegisterRow &row : registerCatalogue()) elements_[row.valueKey.toString()];
  for (const char16_t *key : otherElements) elements_[QString::fromUtf16(key)];
  for (auto &[key, element] : elements_) state_.ObjectDictionaryArray.set(key, element);
}

Report::~Report() {
  if (updateTimer_) updateTimer_->stop();
  if (countdownTimer_) countdownTimer_->stop();
  for (const auto &[key, element] : elements_) state_.ObjectDictionaryArray.remove(key);
}

void Report::start() {
  if (state_.allSerialPortsInfo.empty()) {
    fail(QStringLiteral(
        "there is no serial port: plug in the servo's USB adapter, name a terminal with --port "
        "PATH, or try --demo."));
    return;
  }
  port_ = state_.allSerialPortsInfo.front();
  state_.SelectSerial = port_;
  state_.selectPort = 0;
  state_.CancelConnectFlag.clear();
  application_.serialFormat();
  if (!port_->isOpen()) {
    const auto error = application_.lastSerialError();
    fail(error ? openFailureText(*error)
               : QStringLiteral("%1 could not be opened: check that it is the servo adapter's port.")
                     .arg(port_->path()));
    return;
  }
  updateTimer_ = desktop_.timers.repeating(updateInterval, [this] { update(); });
  countdownTimer_ = desktop_.timers.repeating(countdownInterval, [this] { countDown(); });
}

void Report::update() {
  if (application_.serialPort() != port_) {
    fail(QStringLiteral(
             "the port %1 was removed while it was being read: check the cable, plug the adapter in "
             "again and retry.")
             .arg(port_->name()));
    return;
  }
  const QString request = std::exchange(state_.ToolbarFlag, QString());
  if (request == u"MotorInitFail") {
    const bool several = elements_[QStringLiteral("errormsg")].text() ==
                         desktop_.strings.text(u"there_are_more_than_one_servo");
    fail(several
             ? QStringLiteral("more than one servo answered on %1: connect just one servo to the bridge and "
                              "retry.")
                   .arg(port_->name())
             : QStringLiteral("no servo answered behind the bridge on %1: check the servo's cable and power, "
                              "then retry.")
                   .arg(port_->name()));
    return;
  }
  if (const int read = registersRead(); read > readSoFar_ || request == u"MotorInitOK") {
    readSoFar_ = read;
    secondsLeft_ = countdownSeconds;
  }
  if (allRegistersRead()) finish(true, format_ == ReportFormat::Json ? json() : table());
}

void Report::countDown() {
  if (--secondsLeft_ > 0) return;
  if (readSoFar_ == 0 && state_.CanUseTavril != u"true") {
    fail(QStringLiteral(
             "no answer from %1 within %2 s: check that it is the servo's adapter, that the bridge has "
             "power and that its cable is in.")
             .arg(port_->name())
             .arg(countdownSeconds));
  } else {
    fail(QStringLiteral(
             "%1 fell silent after %2 of %3 registers: check the servo's cable and power, then retry.")
             .arg(port_->name())
             .arg(readSoFar_)
             .arg(registerCount));
  }
}

int Report::registersRead() const {
  return static_cast<int>(std::ranges::count_if(registerCatalogue(), [this](const RegisterRow &row) {
    return !elements_.at(row.valueKey.toString()).text().isEmpty();
  }));
}

bool Report::allRegistersRead() const {
  return registersRead() == registerCount;
}

void Report::finish(bool succeeded, const QString &text) {
  if (updateTimer_) updateTimer_->stop();
  if (countdownTimer_) countdownTimer_->stop();
  if (const auto finished = std::exchange(finished_, nullptr)) finished({succeeded, text});
}

void Report::fail(const QString &text) {
  finish(false, text);
}

QString Report::table() const {
  qsizetype widest = 0;
  for (const RegisterRow &row : registerCatalogue()) widest = std::max(widest, row.nameKey.size());
  QString text;
  for (const RegisterRow &row : registerCatalogue()) {
    text +=
        QStringLiteral("%1  %2  %3\n")
            .arg(QString::number(row.number).rightJustified(2), row.nameKey.toString().leftJustified(widest),
                 elements_.at(row.valueKey.toString()).text());
  }
  return text;
}

QString Report::json() const {
  QStringList registers;
  for (const RegisterRow &row : registerCatalogue()) {
    const QString value = elements_.at(row.valueKey.toString()).text();
    bool isNumber = false;
    const int number = value.toInt(&isNumber);
    registers.append(
        QStringLiteral("    \"%1\": %2")
            .arg(row.nameKey.toString(), isNumber ? QString::number(number) : jsonString(value)));
  }
  return QStringLiteral("{\n  \"port\": %1,\n  \"registers\": {\n%2\n  }\n}\n")
      .arg(jsonString(port_->name()), registers.join(QStringLiteral(",\n")));
}

}  // namespace tavril
