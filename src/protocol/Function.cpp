#include "protocol/Function.h"

#include "platform/Desktop.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/NamedDevice.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/CommandSender.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "protocol/StatusLists.h"

#include <QLatin1String>
#include <algorithm>
#include <array>
#include <thread>

namespace tavril {

namespace {

constexpr int calibrationAngle = 15;
constexpr int firstStatusRegister = 16;
constexpr qsizetype dataAt = 3;  // first data byte of a reply
constexpr qsizetype highAt = 4;  // high and low byte of a register's value
constexpr qsizetype lowAt = 5;

std::uint8_t lowByte(int value) {
  return static_cast<std::uint8_t>(value & 0xFF);
}

/// The row of the command that the reply answers, or nothing for a code that is not in the table.
const FrameRow *rowOf(const QString &code) {
  const auto *found = std::ranges::find_if(
      frameTable, [&](const FrameRow &row) { return code == QString::number(static_cast<int>(row.code)); });
  return found == frameTable.end() ? nullptr : found;
}

QString countText(int bits, const StatusList &list, const QString &byteText) {
  // Kept: C18.
  if (bits < 0) return byteText + QStringLiteral(" Item");
  return QStringLiteral("%1 Items").arg(list.count);
}

}  // namespace

Function::Function(SharedState &state, CommandSender &sender, const Desktop &desktop)
    : state_(state), sender_(sender), strings_(desktop.strings), alert_(desktop.alert), log_(desktop.log) {}

// ---------------------------------------------------------------------------------------------- builders

void Function::begin(CommandCode code) {
  const std::size_t length = frameRow(code).length();
  state_.SerialCMD[FrameByte::start] = startMark;
  state_.SerialCMD[FrameByte::length] = static_cast<std::uint8_t>(length);
  state_.SerialCMD[FrameByte::code] = static_cast<std::uint8_t>(code);
  state_.SerialCMD[length - 1] = endMark;
}

void Function::send(CommandCode code) {
  begin(code);
  sender_.SendCMDtoMCU();
}

void Function::Init_Servo() {
  send(CommandCode::InitServo);
}

void Function::Release_Servo() {
  send(CommandCode::ReleaseServo);
}

void Function::Reboot_Servo() {
  send(CommandCode::RebootServo);
}

void Function::ResetServotoDefaultSetting() {
  send(CommandCode::ResetServo);
}

void Function::ReadServoPosition() {
  send(CommandCode::ReadServoPosition);
}

void Function::SetServoPosition(int position) {
  begin(CommandCode::SetServoPosition);
  state_.SerialCMD[3] = lowByte((position & 0xFF00) >> 8);
  state_.SerialCMD[4] = lowByte(position);
  sender_.SendCMDtoMCU();
}

void Function::ReadServoSettingValue(int registerNumber) {
  begin(CommandCode::ReadServoSettingValue);
  state_.SerialCMD[3] = lowByte(registerNumber);
  sender_.SendCMDtoMCU();
}

void Function::WriteServoSettingValue(std::uint8_t registerNumber, int value) {
  begin(CommandCode::WriteServoSettingValue);
  state_.SerialCMD[3] = registerNumber;
  state_.SerialCMD[4] = lowByte(value / 256);  // Kept: C10.
  state_.SerialCMD[5] = lowByte(value % 256);
  if (registerNumber == calibrationAngle) {
    state_.SerialCMD[4] = value >= 0 ? 0x00 : 0xFF;
    state_.SerialCMD[5] = lowByte(value);
  }
  logCommand();
  sender_.SendCMDtoMCU();
}

void Function::ErrorMessageReturn(int code) {
  begin(CommandCode::ErrorMessage);
  // Kept: C9.
  if (code >= 1 && code <= 3) state_.SerialCMD[3] = lowByte(code);
  sender_.SendCMDtoMCU();
}

void Function::ReadMotorParameter(int registerNumber) {
  if (findRegister(registerNumber)) ReadServoSettingValue(registerNumber);
}

void Function::WriteMotorParameter(int registerNumber) {
  const RegisterRow *row = findRegister(registerNumber);
  if (!row || !row->isSetting()) return;
  const int value = state_.ObjectDictionaryArray.element(row->valueKey).integerValue();
  WriteServoSettingValue(static_cast<std::uint8_t>(registerNumber), value);
}

void Function::logCommand() {
  QString frame;
  for (std::size_t i = 0; i < state_.SerialCMD[FrameByte::length]; ++i) {
    frame += QString::number(state_.SerialCMD[i], 16) + u' ';
  }
  log_.write(QStringLiteral("CMD=") + frame);
}

// ----------------------------------------------------------------------------------------------- replies

QString Function::returnErrorCode(const QStringList &frame) {
  const QString code = frame.value(static_cast<qsizetype>(FrameByte::code));
  const FrameRow *row = rowOf(code);
  QString result;
  if (!row || row->code == CommandCode::ReleaseServo) {
    // Kept: C11.
    result = QStringLiteral("Null");
  } else if (row->code == CommandCode::ReadServoSettingValue && !state_.limitFlag.isEmpty()) {
    // Kept: C17.
  } else if (static_cast<std::size_t>(frame.size()) < row->replyPlaces()) {
    // The position read last must not be lost to a cut reply, so the text that the link keeps stays too.
    log_.write(QStringLiteral("Reply too short, ignored: ") + listText(frame));
    result = state_.returnSTR;
  } else {
    // If a reply is one byte short, its end mark counts as the last byte of its data.
    switch (row->code) {
      case CommandCode::InitServo:
        result = decodeDetection(frame);
        break;
      case CommandCode::ReadServoSettingValue:
        result = decodeSetting(frame);
        break;
      case CommandCode::WriteServoSettingValue:
        // Kept: C13.
        if (frame[dataAt] == QString::number(calibrationAngle)) {
          alertUser(strings_.text(u"SetOK"), QString());
        }
        // Kept: C12.
        result = QStringLiteral("Lost Servo Connecting");
        break;
      case CommandCode::ErrorMessage:
        result = decodeErrorReport(frame);
        break;
      case CommandCode::SetServoPosition:
        break;
      case CommandCode::ReadServoPosition:
        result = decodePosition(frame);
        break;
      case CommandCode::RebootServo:
      case CommandCode::ResetServo:
        ReadServoSettingValue(1);
        break;
      case CommandCode::ReleaseServo:
        break;
    }
  }
  std::this_thread::yield();
  return result;
}

void Function::show(QStringView key, const QString &text) const {
  state_.ObjectDictionaryArray.element(key).setText(text);
}

void Function::alertUser(const QString &messageText, const QString &informativeText) {
  const int answer = alert_.run({messageText, informativeText, {QStringLiteral("OK")}});
  if (answer == ModalAlert::firstButton) log_.write(QStringLiteral("OK"));
}

QString Function::decodeDetection(const QStringList &frame) {
  log_.write(frame[static_cast<qsizetype>(FrameByte::code)]);
  QString message;
  if (frame[dataAt] == u"0") {
    message = strings_.text(u"no_servo");
    alertUser(strings_.text(u"Error"), message);
    state_.CanUseTavril = QStringLiteral("fail");
    state_.ToolbarFlag = QStringLiteral("MotorInitFail");
    show(u"errormsg", message);
  } else if (frame[dataAt] == u"1") {
    message = QLatin1String("");  // empty, which is not the null of an unknown result
    state_.CanUseTavril = QStringLiteral("true");
    state_.ToolbarFlag = QStringLiteral("MotorInitOK");
    show(u"errormsg", message);
    ReadServoSettingValue(1);
  } else if (frame[dataAt] == u"2") {  // Kept: C15.
    message = strings_.text(u"there_are_more_than_one_servo");
    state_.CanUseTavril = QStringLiteral("fail");
    state_.ToolbarFlag = QStringLiteral("MotorInitFail");
    show(u"errormsg", message);
  }
  // Kept: C16.
  const QString port = state_.SelectSerial ? state_.SelectSerial->name() : QString();
  show(u"ConnectStatus", strings_.text(u"COM_Connect_P1") + port);
  state_.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(true);
  return message;
}

QString Function::decodeSetting(const QStringList &frame) {
  const QString &number = frame[dataAt];
  for (const RegisterRow &row : settingRegisters()) {
    if (number != QString::number(row.number)) continue;
    showSetting(row, frame);
    if (row.number == settingCount) OnlyReadFlag = QString::number(firstStatusRegister);
    ReadMotorParameter(row.number + 1);
    return QStringLiteral("Read Servo Setting Value Success");
  }
  if (!decodeStatus(frame)) {
    OnlyReadFlag.clear();
    // Kept: C22.
    show(u"StatusError_value", frame[lowAt]);
    log_.warn(QStringLiteral("Error=") + listText(frame));
    log_.warn(QStringLiteral("Read Error!"));
  }
  return QStringLiteral("Read Servo Setting Value Success");
}

void Function::showSetting(const RegisterRow &row, const QStringList &frame) {
  ScreenElement &element = state_.ObjectDictionaryArray.element(row.valueKey);
  const QString &low = frame[lowAt];
  if (row.reply == ReplyValue::Word) {
    element.setText(QString::number(frame[highAt].toInt() * 256 + low.toInt()));
  } else if (row.reply == ReplyValue::SignedByte) {
    const auto value = static_cast<std::int8_t>(low.toInt() & 0xFF);
    log_.write(QString::number(value & 0x80, 16));
    if ((value & 0x80) != 0) {
      element.setIntegerValue(value);
    } else {
      element.setText(low);
    }
  } else {
    element.setText(low);
  }
  if (!row.entryKey.isEmpty()) {
    state_.textFieldValue.insert(row.entryKey.toString(), EntryValue(element.text()));
  }
}

bool Function::decodeStatus(const QStringList &frame) {
  for (int number = firstStatusRegister; number <= registerCount; ++number) {
    const QString text = QString::number(number);
    // Kept: C20.
    if (frame[dataAt] != text && OnlyReadFlag != text) continue;
    if (number < registerCount) OnlyReadFlag = QString::number(number + 1);  // Kept: C21.
    showStatus(number, frame);
    ReadMotorParameter(number + 1);
    return true;
  }
  return false;
}

void Function::showStatus(int registerNumber, const QStringList &frame) {
  static constexpr std::array logNames{u"StatusError", u"StatusDetail", u"PresentVolt", u"PresentTemp",
                                       u"PresentLoad"};
  const auto name = logNames[static_cast<std::size_t>(registerNumber - firstStatusRegister)];
  log_.write(QString::fromUtf16(name) + u'=' + listText(frame));

  const RegisterRow &row = *findRegister(registerNumber);
  const int bits = frame[lowAt].toInt();
  if (row.reply == ReplyValue::ErrorBits) {
    const StatusList list = statusErrorList(bits, strings_, log_);
    state_.ErrorMsgShowToMegView.insert(QStringLiteral("Error"), list.text);
    show(row.valueKey, countText(bits, list, frame[lowAt]));
  } else if (row.reply == ReplyValue::DetailBits) {
    const bool shutDownDisabled = state_.ObjectDictionaryArray.element(u"Torque_value").text() == u"0";
    const StatusList list = statusDetailList(bits, shutDownDisabled, strings_, log_);
    state_.ErrorMsgShowToMegView.insert(QStringLiteral("Detail"), list.text);
    show(row.valueKey, countText(bits, list, frame[lowAt]));
  } else {
    show(row.valueKey, frame[lowAt]);
  }
}

QString Function::decodeErrorReport(const QStringList &frame) {
  // Kept: C14.
  static const QStringList texts{QStringLiteral("Packet CMD Error"), QStringLiteral("Packet Timerout"),
                                 QStringLiteral("Packet Length Error"),
                                 QStringLiteral("Packet Setting Over Range"),
                                 QStringLiteral("Packet Lost Servo Connecting")};
  QString text = QStringLiteral("Unknow Error Message");
  for (qsizetype code = 0; code < texts.size(); ++code) {
    if (frame[dataAt] == QString::number(code)) text = texts[code];
  }
  show(u"errormsg", text);
  log_.warn(text);
  return text;
}

QString Function::decodePosition(const QStringList &frame) {
  QString position = QString::number(frame[dataAt].toInt() * 256 + frame[dataAt + 1].toInt());
  log_.write(position);
  state_.ToolbarFlag = QStringLiteral("UpdateMotorValue");
  return position;
}

}  // namespace tavril
