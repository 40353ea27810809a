#include "protocol/ConnectionState.h"

#include "platform/KeyedText.h"
#include "platform/NamedDevice.h"
#include "protocol/SharedState.h"

#include <QString>

namespace tavril {

namespace {

KeyedText lineOf(ConnectionState connection, const NamedDevice *port) {
  switch (connection) {
    case ConnectionState::Connected:
      return KeyedText(u"COM_Connect_P1") + KeyedText::words(port ? port->name() : QString());
    case ConnectionState::Initialising:
      return KeyedText(u"Serial_port_start_initialization");
    case ConnectionState::NotConnected:
      break;
  }
  return KeyedText(u"Not_connect");
}

}  // namespace

void showConnection(SharedState &state, ConnectionState connection, const StringTable &strings) {
  state.connection = connection;
  state.ObjectDictionaryArray.show(u"ConnectStatus", lineOf(connection, state.SelectSerial.get()), strings);
}

}  // namespace tavril
