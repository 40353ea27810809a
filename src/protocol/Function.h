#pragma once

#include <QString>
#include <QStringList>

#include <cstdint>

namespace tavril {

namespace wire {
struct Command;
}

class CommandSender;
class KeyedText;
class Log;
class ModalAlert;
class StringTable;
struct Desktop;
struct RegisterRow;
struct SharedState;

/// Builds the command frames and decodes the replies. Every builder fills the shared command buffer and has
/// it sent at once; nothing is queued and no reply is awaited. The decoder also drives the reading sequence:
/// each register's reply asks for the next register.
class Function {
 public:
  Function(SharedState &state, CommandSender &sender, const Desktop &desktop);

  // Kept: C7.
  void Init_Servo();
  void Release_Servo();
  void Reboot_Servo();
  void ResetServotoDefaultSetting();
  void ReadServoPosition();
  /// Bits of the position above 15 are dropped.
  void SetServoPosition(int position);
  void ReadServoSettingValue(int registerNumber);
  /// No range check; register 15 is sent as a sign-extended byte, all others as value / 256 and remainder.
  void WriteServoSettingValue(std::uint8_t registerNumber, int value);
  /// Sends the code for 1 to 3; for any other code the byte is left as the buffer has it.
  void ErrorMessageReturn(int code);

  /// Reads registers 1 to 20; any other number does nothing.
  void ReadMotorParameter(int registerNumber);
  /// Writes the value that the register's screen element shows, registers 1 to 15; any other does nothing.
  void WriteMotorParameter(int registerNumber);

  /// Decodes one whole reply frame, given as one decimal text a byte, and acts on it. Returns the text for
  /// the message line, null where the reply has none. A reply that has not all the places that are looked at
  /// for its command changes nothing and is logged; how long it should be is not asked.
  QString returnErrorCode(const QStringList &frame);

 private:
  void fill(const wire::Command &command);
  void send(const wire::Command &command);
  void logCommand();

  void showMessage(const KeyedText &message) const;
  void alertUser(const QString &messageText, const QString &informativeText);

  QString decodeDetection(const QStringList &frame);
  QString decodeSetting(const QStringList &frame);
  void showSetting(const RegisterRow &row, const QStringList &frame);
  bool decodeStatus(const QStringList &frame);
  void showStatus(const RegisterRow &row, const QStringList &frame);
  QString decodeErrorReport(const QStringList &frame);
  QString decodePosition(const QStringList &frame);

  SharedState &state_;
  CommandSender &sender_;
  const StringTable &strings_;
  ModalAlert &alert_;
  Log &log_;

  /// Decimal number of the status register whose reply is expected next, empty at first.
  QString OnlyReadFlag;
};

}  // namespace tavril
