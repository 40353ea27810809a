#include "app/ReadOut.h"

#include "app/AppDelegate.h"
#include "platform/Desktop.h"
#include "platform/KeyedText.h"
#include "platform/ScreenElement.h"
#include "platform/Timers.h"
#include "protocol/Function.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "serial/PortError.h"
#include "serial/SerialPort.h"

#include <algorithm>
#include <chrono>
#include <utility>

namespace tavril {

namespace {

constexpr std::chrono::milliseconds updateInterval{10};
constexpr std::chrono::seconds countdownInterval{1};

}  // namespace

ReadOut::ReadOut(SharedState &state, AppDelegate &application, const Desktop &desktop, Finished finished)
    : state_(state), application_(application), desktop_(desktop), finished_(std::move(finished)) {}

ReadOut::~ReadOut() {
  if (updateTimer_) updateTimer_->stop();
  if (countdownTimer_) countdownTimer_->stop();
}

void ReadOut::start() {
  if (state_.allSerialPortsInfo.empty()) {
    finish(QStringLiteral(
        "there is no serial port: plug in the servo's USB adapter, name a terminal with --port "
        "PATH, or try --demo."));
    return;
  }
  port_ = state_.allSerialPortsInfo.front();
  state_.SelectSerial = port_;
  state_.selectPort = 0;
  state_.CanUseTavril.clear();
  state_.CancelConnectFlag.clear();
  state_.ToolbarFlag = QStringLiteral("InitSerialPort");
  application_.serialFormat();
  if (!port_->isOpen()) {
    const auto error = application_.lastSerialError();
    finish(error ? openFailureText(*error)
                 : QStringLiteral("%1 could not be opened: check that it is the servo adapter's port.")
                       .arg(port_->path()));
    return;
  }
  updateTimer_ = desktop_.timers.repeating(updateInterval, [this] { update(); });
  countdownTimer_ = desktop_.timers.repeating(countdownInterval, [this] { countDown(); });
}

void ReadOut::update() {
  if (application_.serialPort() != port_) {
    finish(QStringLiteral(
               "the port %1 was removed while it was being read: check the cable, plug the adapter in "
               "again and retry.")
               .arg(port_->name()));
    return;
  }
  if (state_.CanUseTavril == u"fail") {
    const bool several =
        state_.ObjectDictionaryArray.shown(u"errormsg") == KeyedText(u"there_are_more_than_one_servo");
    finish((several ? QStringLiteral(
                          "more than one servo answered on %1: connect just one servo to the bridge and "
                          "retry.")
                    : QStringLiteral("no servo answered behind the bridge on %1: check the servo's cable and "
                                     "power, then retry."))
               .arg(port_->name()));
    return;
  }
  const bool detected = state_.CanUseTavril == u"true";
  const int read = registersRead();
  if (read > readSoFar_ || detected != detected_) secondsLeft_ = countdownSeconds;
  readSoFar_ = read;
  detected_ = detected;
  if (read < wire::registerCount) return;
  if (detected) {
    finish(QString());
  } else if (!std::exchange(hasAskedAgain_, true)) {
    // Its answer was lost on the line, and what came in its place began the reading.
    state_.FunctionCMD->Init_Servo();
  }
}

void ReadOut::countDown() {
  if (--secondsLeft_ > 0) return;
  if (!detected_ && readSoFar_ > 0) {
    finish(
        QStringLiteral(
            "%1 answered, but did not tell whether exactly one servo is there: check the servo's cable and "
            "power, then retry.")
            .arg(port_->name()));
  } else if (!detected_) {
    finish(QStringLiteral(
               "no answer from %1 within %2 s: check that it is the servo's adapter, that the bridge has "
               "power and that its cable is plugged in.")
               .arg(port_->name())
               .arg(countdownSeconds));
  } else {
    finish(
        QStringLiteral(
            "%1 stopped answering after %2 of %3 registers: check the servo's cable and power, then retry.")
            .arg(port_->name())
            .arg(readSoFar_)
            .arg(wire::registerCount));
  }
}

int ReadOut::registersRead() const {
  return static_cast<int>(std::ranges::count_if(registerCatalogue(), [this](const RegisterRow &row) {
    return !state_.ObjectDictionaryArray.element(row.valueKey).text().isEmpty();
  }));
}

void ReadOut::finish(const QString &problem) {
  if (updateTimer_) updateTimer_->stop();
  if (countdownTimer_) countdownTimer_->stop();
  if (const auto finished = std::exchange(finished_, nullptr)) finished(problem);
}

}  // namespace tavril
