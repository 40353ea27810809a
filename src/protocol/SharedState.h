#pragma once

#include "platform/KeyedText.h"
#include "protocol/ConnectionState.h"
#include "protocol/EntryValue.h"
#include "protocol/ValueStore.h"
#include "protocol/WatchedText.h"
#include "wire/Frames.h"

#include <QHash>
#include <QString>
#include <QStringList>

#include <memory>
#include <variant>
#include <vector>

namespace tavril {

class Function;
class NamedDevice;
class SerialPort;

/// A help text, or a register's choice texts (index = value).
using HelpEntry = std::variant<QString, QStringList>;

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
