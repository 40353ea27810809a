#include "app/AppDelegate.h"

#include "app/ServoLink.h"
#include "platform/BlockingWait.h"
#include "platform/Bytes.h"
#include "platform/Desktop.h"
#include "platform/Log.h"
#include "platform/NotificationCenter.h"
#include "platform/ProcessExit.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/ConnectionState.h"
#include "protocol/Function.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "serial/PortError.h"
#include "serial/SerialEnvironment.h"
#include "serial/SerialPort.h"
#include "wire/Frames.h"
#include "wire/Registers.h"

#include <QLatin1Char>
#include <QLatin1String>
#include <algorithm>
#include <cstdint>
#include <utility>

namespace tavril {

namespace {

constexpr unsigned long linkBaudRate = 115200;
constexpr std::chrono::milliseconds settleTime{50};

}  // namespace

std::shared_ptr<AppDelegate> AppDelegate::make(SharedState &state, const Desktop &desktop,
                                               const SerialEnvironment &serial, StoreController &store,
                                               std::chrono::milliseconds startUpWait) {
  return std::make_shared<AppDelegate>(Token{}, state, desktop, serial, store, startUpWait);
}

AppDelegate::AppDelegate(Token, SharedState &state, const Desktop &desktop, const SerialEnvironment &serial,
                         StoreController &store, std::chrono::milliseconds startUpWait)
    : state_(state),
      desktop_(desktop),
      serial_(serial),
      store_(store),
      startUpWait_(startUpWait),
      announcements_(state, desktop),
      link_(std::make_shared<ServoLink>()) {}

AppDelegate::~AppDelegate() {
  desktop_.notifications.removeObserver(this);
  state_.CanUseTavril.wasSet = nullptr;
  state_.CancelConnectFlag.wasSet = nullptr;
  link_->setPort(nullptr);
}

// ------------------------------------------------------------------------------------------------ start-up

void AppDelegate::applicationDidFinishLaunching(const MenuOutlets &menu) {
  for (const auto &[outlet, key] : menuTitles) {
    if (ScreenElement *item = menu.*outlet) item->setText(desktop_.strings.text(key));
  }
  state_.returnSTR = QLatin1String("");
  state_.ToolbarFlag = QLatin1String("");
  state_.CanUseTavril.wasSet = [this] { showWhetherGuestsAreServed(); };
  state_.CancelConnectFlag.wasSet = [this] { showWhetherGuestsAreServed(); };
  state_.FunctionCMD = std::make_shared<Function>(state_, *this, desktop_);
  OSSerialInit();
  // Kept: C25.
  state_.SelectSerial = SerialPort::init(serial_);
}

void AppDelegate::OSSerialInit() {
  state_.allSerialPortsInfo.clear();
  serialPortManager_ = SerialPortManager::sharedSerialPortManager(serial_);
  desktop_.notifications.addObserver(this, QString::fromUtf16(SerialPortsWereConnectedNotification),
                                     [this](const Notification &n) { serialPortsWereConnected(n); });
  desktop_.notifications.addObserver(this, QString::fromUtf16(SerialPortsWereDisconnectedNotification),
                                     [this](const Notification &n) { serialPortsWereDisconnected(n); });
  if (desktop_.userNotifications) desktop_.userNotifications->setDelegate(weak_from_this());
  // Runs before the manager's own handler, which tells delegates that their ports are gone. The alert about
  // this must not keep the process from ending.
  serial_.processExit.registerHandler([weak = weak_from_this()] {
    if (const auto self = weak.lock(); self && self->serialPort_) self->serialPort_->setDelegate({});
  });
}

// ------------------------------------------------------------------------------------------------ the link

void AppDelegate::serialFormat() {
  lastSerialError_.reset();
  if (serialPort_) {
    serialPort_->close();
    serialPort_->setDelegate({});
  }
  if (state_.allSerialPortsInfo.empty()) {
    desktop_.log.warn(QStringLiteral("There is no serial port to open."));
    return;
  }
  setSerialPort(state_.allSerialPortsInfo.front());
  serialPort_->setBaudRate(linkBaudRate);
  serialPort_->setDelegate(weak_from_this());
  if (serialPort_->isOpen()) return;
  serialPort_->setDeliveryRule(link_->deliveryRule());
  serialPort_->setUsesLowLatency(true);
  serialPort_->open();
  serialInit();
}

void AppDelegate::serialInit() {
  desktop_.blockingWait.wait(settleTime);
}

void AppDelegate::setSerialPort(std::shared_ptr<SerialPort> port) {
  if (port == serialPort_) return;
  if (serialPort_) serialPort_->setDelegate({});
  serialPort_ = std::move(port);
  link_->setPort(serialPort_);
  if (serialPort_) serialPort_->setDelegate(weak_from_this());
}

QString AppDelegate::openPath() const {
  return serialPort_ && serialPort_->isOpen() ? serialPort_->path() : QString();
}

QString AppDelegate::pathToOpen() const {
  if (QString open = openPath(); !open.isEmpty()) return open;
  return state_.allSerialPortsInfo.empty() ? QString() : state_.allSerialPortsInfo.front()->path();
}

QString AppDelegate::cmdlabel(int registerNumber) const {
  const RegisterRow *row = findRegister(registerNumber);
  if (!row || !row->isSetting()) return {};
  // Kept: C26.
  const bool isAngle = registerNumber == wire::RegisterNumber::CalibrationAngle;
  return (isAngle ? row->helpKey : row->valueKey).toString();
}

void AppDelegate::SendCMDtoMCU() {
  // Kept: C27.
  QString trace = cmdlabel(state_.SerialCMD[wire::FrameByte::firstData]) + QStringLiteral("TX:");
  for (const std::uint8_t byte : wire::frameIn(state_.SerialCMD)) {
    const QString text = QString::number(byte, 16);
    desktop_.log.write(text);
    trace += u' ' + text;
  }
  state_.ObjectDictionaryArray.element(u"TXcmd").setText(trace);
  link_->send(state_.SerialCMD);
  state_.SerialCMD.fill(0);
}

void AppDelegate::showWhetherGuestsAreServed() {
  link_->setServesGuests(state_.CanUseTavril == u"true" && state_.CancelConnectFlag.isEmpty());
}

void AppDelegate::remember(const QByteArray &data) {
  constexpr qsizetype longest = 4096;
  if (wire::codeIn(asBytes(data)) == wire::CommandCode::InitServo) received_.clear();
  received_ += data.first(std::min(data.size(), longest - received_.size()));
}

void AppDelegate::didReceiveData(const Port &, const QByteArray &data) {
  remember(data);
  QStringList decimal;
  QStringList hexadecimal;
  for (const char byte : data) {
    const auto value = static_cast<unsigned char>(byte);
    decimal.append(QString::number(value));
    hexadecimal.append(QStringLiteral("%1").arg(value, 2, 16, QLatin1Char('0')));
  }
  if (state_.CancelConnectFlag.isEmpty() && !acceptFrame(data, decimal, hexadecimal) &&
      wire::hasStartMark(asBytes(data))) {
    restartReading(decimal);
  }

  // Kept: C28.
  if (data.size() == 1 && decimal.front() == u"00") {
    showConnection(state_, ConnectionState::NotConnected, desktop_.strings);
    for (const RegisterRow &row : settingRegisters()) {
      state_.ObjectDictionaryArray.element(row.valueKey).setText(QString());
    }
  }
}

bool AppDelegate::acceptFrame(const QByteArray &data, const QStringList &decimal,
                              const QStringList &hexadecimal) {
  if (!wire::isFrame(asBytes(data))) return false;
  QString trace = QStringLiteral("RX:");
  for (const QString &byte : decimal + hexadecimal) trace += u' ' + byte;
  state_.ObjectDictionaryArray.element(u"RXcmd").setText(trace);
  state_.returnSTR = state_.FunctionCMD->returnErrorCode(decimal);
  return true;
}

void AppDelegate::restartReading(const QStringList &decimal) {
  if (desktop_.log.isEnabled()) {
    const QString content = QStringLiteral("ContentArray=") + listText(decimal);
    for (qsizetype i = 0; i < decimal.size(); ++i) {  // Kept: C29.
      desktop_.log.write(content);
      desktop_.log.write(QStringLiteral("out %1").arg(i));
    }
  }
  state_.FunctionCMD->ReadMotorParameter(1);
}

bool AppDelegate::respondsTo(SerialPortCallback callback) const {
  return callback != SerialPortCallback::DidReceiveResponse &&
         callback != SerialPortCallback::RequestDidTimeout;
}

void AppDelegate::serialPortWasOpened(const Port &) {
  received_.clear();
  showConnection(state_, ConnectionState::Initialising, desktop_.strings);
  desktop_.blockingWait.wait(startUpWait_);
  state_.FunctionCMD->Init_Servo();
}

void AppDelegate::serialPortWasClosed(const Port &) {
  showConnection(state_, ConnectionState::NotConnected, desktop_.strings);
}

void AppDelegate::serialPortWasRemovedFromSystem(const Port &) {
  setSerialPort(nullptr);
  // The port has no delegate any more that could say so when it closes.
  showConnection(state_, ConnectionState::NotConnected, desktop_.strings);
  announcements_.serialPortWasRemoved();
}

void AppDelegate::didEncounterError(const Port &port, const Error &error) {
  lastSerialError_ = error;
  desktop_.log.warn(portErrorLine(error, port->description()));
}

// --------------------------------------------------------------------------------------------- menu actions

void AppDelegate::RebootServo() {
  request(QStringLiteral("RebootServo"));
}

void AppDelegate::ResetServo() {
  request(QStringLiteral("ResetServo"));
}

void AppDelegate::DetectionMotro() {
  request(QStringLiteral("DetectionMotro"));
}

void AppDelegate::request(const QString &word) {
  if (state_.ToolbarFlag.isEmpty()) state_.ToolbarFlag = word;
}

}  // namespace tavril
