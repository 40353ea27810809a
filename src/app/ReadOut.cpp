#include "app/ReadOut.h"

#include "app/AppDelegate.h"
#include "app/ReadOutTexts.h"
#include "platform/Desktop.h"
#include "platform/KeyedText.h"
#include "platform/ScreenElement.h"
#include "platform/Timers.h"
#include "protocol/Function.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
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
    finish(readOutTexts::noPort());
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
    finish(readOutTexts::notOpened(*port_, error ? &*error : nullptr));
    return;
  }
  updateTimer_ = desktop_.timers.repeating(updateInterval, [this] { update(); });
  countdownTimer_ = desktop_.timers.repeating(countdownInterval, [this] { countDown(); });
}

void ReadOut::update() {
  if (application_.serialPort() != port_) {
    finish(readOutTexts::removed(port_->name()));
    return;
  }
  if (state_.CanUseTavril == u"fail") {
    const bool several =
        state_.ObjectDictionaryArray.shown(u"errormsg") == KeyedText(u"there_are_more_than_one_servo");
    finish(several ? readOutTexts::severalServos(port_->name()) : readOutTexts::noServo(port_->name()));
    return;
  }
  const bool detected = state_.CanUseTavril == u"true";
  const int read = registersRead();
  if (read > readSoFar_ || detected != detected_) secondsLeft_ = readOutTexts::countdownSeconds;
  readSoFar_ = read;
  detected_ = detected;
  if (read < wire::registerCount) return;
  if (detected) {
    finish(QString());
  } else if (!std::exchange(hasAskedAgain_, true)) {
    // The answer was lost on the line, and other bytes have begun the reading.
    state_.FunctionCMD->Init_Servo();
  }
}

void ReadOut::countDown() {
  if (--secondsLeft_ > 0) return;
  const QString name = port_->name();
  if (detected_) {
    finish(readOutTexts::stopped(name, readSoFar_));
  } else {
    finish(readSoFar_ > 0 ? readOutTexts::notDetected(name) : readOutTexts::silent(name));
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
