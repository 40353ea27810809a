#pragma once

#include "platform/KeyedText.h"
#include "platform/ScreenElement.h"
#include "protocol/ConnectionState.h"
#include "protocol/ValueStore.h"
#include "wire/Frames.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <functional>
#include <memory>
#include <variant>
#include <vector>

namespace tavril {

class Function;
class NamedDevice;
class SerialPort;

/// A help text, or a register's choice texts (index = value).
using HelpEntry = std::variant<QString, QStringList>;

/// What a rejected entry is put back to: the text last read from the servo. Before the first read it is the
/// field itself. Kept: C24.
class EntryValue {
 public:
  EntryValue() = default;
  explicit EntryValue(const QString &text) : value_(text) {}
  explicit EntryValue(ScreenElement &field) : value_(&field) {}

  QString text() const {
    if (const auto *field = std::get_if<ScreenElement *>(&value_)) return (*field)->text();
    return std::get<QString>(value_);
  }
  bool isSeed() const { return std::holds_alternative<ScreenElement *>(value_); }

 private:
  std::variant<QString, ScreenElement *> value_;
};

/// A text that says when it is set.
class WatchedText : public QString {
 public:
  WatchedText &operator=(const QString &text) {
    QString::operator=(text);
    if (wasSet) wasSet();
    return *this;
  }
  void clear() { *this = QString(); }

  std::function<void()> wasSet;
};

/// What the parts of the program share. One instance, made by main and passed on by reference; tests make
/// their own. Texts are empty when idle. Kept: C6.
struct SharedState {
  wire::CommandBuffer SerialCMD{};   ///< the command being sent; all zero between two transmissions
  ValueStore ObjectDictionaryArray;  ///< screen elements by key

  ConnectionState connection = ConnectionState::NotConnected;

  QString ToolbarFlag;            ///< request word for the screen, such as "MotorInitOK"
  WatchedText CanUseTavril;       ///< "true" once exactly one servo answered, "fail" after a failed detection
  QString limitFlag;              ///< "MouseIn" while the dial is dragged
  QString TextMouseFlag;          ///< "MouseDown" after a press outside the dial
  WatchedText CancelConnectFlag;  ///< "disconnect" after the user gave up waiting
  QString returnSTR;              ///< what the last decoded reply said; the position after a position reply

  QHash<QString, EntryValue> textFieldValue;        ///< what a rejected entry is put back to, by entry key
  QHash<QString, KeyedText> ErrorMsgShowToMegView;  ///< decoded status lists under "Error" and "Detail"

  std::vector<std::shared_ptr<SerialPort>> allSerialPortsInfo;  ///< USB ports ever seen; the first is opened
  std::shared_ptr<NamedDevice> SelectSerial;                    ///< port chosen in the dialog, for messages
  int selectPort = 0;                                           ///< its place in the dialog's list

  std::shared_ptr<Function> FunctionCMD;  ///< decodes the replies

  QStringList Key;                ///< names of the fifteen settings, in register order
  QHash<QString, HelpEntry> Msg;  ///< their help texts
};

}  // namespace tavril
