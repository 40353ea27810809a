#include "protocol/Function.h"

#include "platform/Desktop.h"
#include "platform/KeyedText.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/CommandSender.h"
#include "protocol/ConnectionState.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "protocol/StatusLists.h"
#include "wire/Frames.h"
#include "wire/Registers.h"

#include <QLatin1String>
#include <algorithm>
#include <thread>

namespace tavril {

namespace {

using wire::CommandCode;

constexpr qsizetype codeAt = wire::FrameByte::code;
constexpr qsizetype dataAt = wire::FrameByte::firstData;
constexpr qsizetype highAt = dataAt + 1;  // high and low byte of a register's value
constexpr qsizetype lowAt = dataAt + 2;

/// The row of the command that the reply answers, or nothing for a code that is not in the table.
const wire::FrameRow *rowOf(const QString &code) {
  const auto *found = std::ranges::find_if(wire::frameTable, [&](const wire::FrameRow &row) {
    return code == QString::number(static_cast<int>(row.code));
  });
  return found == wire::frameTable.end() ? nullptr : found;
}

QString countText(int bits, const StatusList &list, const QString &byteText) {
  // Kept: C18.
  if (bits < 0) return byteText + QStringLiteral(" Item");
  return itemsText(list);
}

}  // namespace

Function::Function(SharedState &state, CommandSender &sender, const Desktop &desktop)
    : state_(state), sender_(sender), strings_(desktop.strings), alert_(desktop.alert), log_(desktop.log) {}

// ---------------------------------------------------------------------------------------------- builders

void Function::fill(const wire::Command &command) {
  const wire::CommandBuffer buffer = wire::encode(command);
  std::ranges::copy(wire::frameIn(buffer), state_.SerialCMD.begin());
}

void Function::send(const wire::Command &command) {
  fill(command);
  sender_.SendCMDtoMCU();
}

void Function::Init_Servo() {
  send(wire::Command::detect());
}

void Function::Release_Servo() {
  send({CommandCode::ReleaseServo});
}

void Function::Reboot_Servo() {
  send({CommandCode::RebootServo});
}

void Function::ResetServotoDefaultSetting() {
  send({CommandCode::ResetServo});
}

void Function::ReadServoPosition() {
  send(wire::Command::readPosition());
}

void Function::SetServoPosition(int position) {
  send(wire::Command::setPosition(position));
}

void Function::ReadServoSettingValue(int registerNumber) {
  send(wire::Command::readRegister(registerNumber));
}

void Function::WriteServoSettingValue(std::uint8_t registerNumber, int value) {
  fill(wire::Command::writeRegister(registerNumber, value));
  logCommand();
  sender_.SendCMDtoMCU();
}

void Function::ErrorMessageReturn(int code) {
  // Kept: C9.
  const bool isKnown = code >= 1 && code <= 3;
  send(wire::Command::reportError(isKnown ? code : state_.SerialCMD[wire::FrameByte::firstData]));
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
  for (const std::uint8_t byte : wire::frameIn(state_.SerialCMD)) frame += QString::number(byte, 16) + u' ';
  log_.write(QStringLiteral("CMD=") + frame);
}

// ----------------------------------------------------------------------------------------------- replies

QString Function::returnErrorCode(const QStringList &frame) {
  const QString code = frame.value(codeAt);
  const wire::FrameRow *row = rowOf(code);
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
        if (frame[dataAt] == QString::number(wire::RegisterNumber::CalibrationAngle)) {
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

void Function::showMessage(const KeyedText &message) const {
  state_.ObjectDictionaryArray.show(u"errormsg", message, strings_);
}

void Function::alertUser(const QString &messageText, const QString &informativeText) {
  const int answer = alert_.run({messageText, informativeText, {QStringLiteral("OK")}});
  if (answer == ModalAlert::firstButton) log_.write(QStringLiteral("OK"));
}

QString Function::decodeDetection(const QStringList &frame) {
  log_.write(frame[codeAt]);
  QString message;
  if (frame[dataAt] == u"0") {
    message = strings_.text(u"no_servo");
    alertUser(strings_.text(u"Error"), message);
    state_.CanUseTavril = QStringLiteral("fail");
    state_.ToolbarFlag = QStringLiteral("MotorInitFail");
    showMessage(KeyedText(u"no_servo"));
  } else if (frame[dataAt] == u"1") {
    message = QLatin1String("");  // empty, which is not the null of an unknown result
    state_.CanUseTavril = QStringLiteral("true");
    state_.ToolbarFlag = QStringLiteral("MotorInitOK");
    showMessage(KeyedText());
    ReadServoSettingValue(1);
  } else if (frame[dataAt] == u"2") {  // Kept: C15.
    message = strings_.text(u"there_are_more_than_one_servo");
    state_.CanUseTavril = QStringLiteral("fail");
    state_.ToolbarFlag = QStringLiteral("MotorInitFail");
    showMessage(KeyedText(u"there_are_more_than_one_servo"));
  }
  // Kept: C16.
  showConnection(state_, ConnectionState::Connected, strings_);
  state_.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(true);
  return message;
}

QString Function::decodeSetting(const QStringList &frame) {
  const QString &number = frame[dataAt];
  for (const RegisterRow &row : settingRegisters()) {
    if (number != QString::number(row.number)) continue;
    showSetting(row, frame);
    if (row.number == wire::settingCount) OnlyReadFlag = QString::number(row.number + 1);
    ReadMotorParameter(row.number + 1);
    return QStringLiteral("Read Servo Setting Value Success");
  }
  if (!decodeStatus(frame)) {
    OnlyReadFlag.clear();
    // Kept: C22.
    state_.ObjectDictionaryArray.element(u"StatusError_value").setText(frame[lowAt]);
    log_.warn(QStringLiteral("Error=") + listText(frame));
    log_.warn(QStringLiteral("Read Error!"));
  }
  return QStringLiteral("Read Servo Setting Value Success");
}

void Function::showSetting(const RegisterRow &row, const QStringList &frame) {
  ScreenElement &element = state_.ObjectDictionaryArray.element(row.valueKey);
  const QString &low = frame[lowAt];
  const int value = wire::valueOf(*wire::findRegister(row.number), frame[highAt].toInt(), low.toInt());
  if (row.reply == wire::ReplyValue::Word) {
    element.setText(QString::number(value));
  } else if (row.reply == wire::ReplyValue::SignedByte) {
    log_.write(QString::number(value & 0x80, 16));
    if (value < 0) {
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
  const auto rows = registerCatalogue().subspan<wire::settingCount>();
  // Kept: C20.
  const auto row = std::ranges::find_if(rows, [&](const RegisterRow &candidate) {
    const QString number = QString::number(candidate.number);
    return frame[dataAt] == number || OnlyReadFlag == number;
  });
  if (row == rows.end()) return false;
  // Kept: C21.
  if (row->number < wire::registerCount) OnlyReadFlag = QString::number(row->number + 1);
  showStatus(*row, frame);
  ReadMotorParameter(row->number + 1);
  return true;
}

void Function::showStatus(const RegisterRow &row, const QStringList &frame) {
  // The log names a status register as its screen element is named, without "_value".
  log_.write(row.valueKey.first(row.valueKey.indexOf(u'_')).toString() + u'=' + listText(frame));

  ScreenElement &element = state_.ObjectDictionaryArray.element(row.valueKey);
  const int bits = frame[lowAt].toInt();
  if (row.reply == wire::ReplyValue::ErrorBits) {
    const StatusList list = statusErrorList(bits, log_);
    state_.ErrorMsgShowToMegView.insert(QStringLiteral("Error"), list.text);
    element.setText(countText(bits, list, frame[lowAt]));
  } else if (row.reply == wire::ReplyValue::DetailBits) {
    const bool shutDownDisabled = state_.ObjectDictionaryArray.element(u"Torque_value").text() == u"0";
    const StatusList list = statusDetailList(bits, shutDownDisabled, log_);
    state_.ErrorMsgShowToMegView.insert(QStringLiteral("Detail"), list.text);
    element.setText(countText(bits, list, frame[lowAt]));
  } else {
    element.setText(frame[lowAt]);
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
  showMessage(KeyedText::words(text));
  log_.warn(text);
  return text;
}

QString Function::decodePosition(const QStringList &frame) {
  QString position = QString::number(wire::wordOf(frame[dataAt].toInt(), frame[dataAt + 1].toInt()));
  log_.write(position);
  state_.ToolbarFlag = QStringLiteral("UpdateMotorValue");
  return position;
}

}  // namespace tavril
