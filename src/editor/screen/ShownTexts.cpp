#include "editor/screen/ShownTexts.h"

#include "platform/ScreenElement.h"
#include "platform/TextChange.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"

#include <QStringList>
#include <QStringView>

namespace tavril {

namespace {

QStringList statusKeys() {
  QStringList keys;
  for (const int bit : {0, 1, 2, 3, 5, 6, 7}) keys.append(QStringLiteral("StatusErrorMsg%1").arg(bit));
  for (const int bit : {4, 5, 60, 61, 7}) keys.append(QStringLiteral("StatusDetailMsg%1").arg(bit));
  return keys;
}

QStringList noticeKeys() {
  QStringList keys;
  for (const RegisterRow &row : registerCatalogue()) keys.append(row.noticeKey());
  return keys;
}

QString connectionLine(const QString &text, const TextChange &change) {
  const QStringList states{QStringLiteral("Not_connect"), QStringLiteral("Serial_port_start_initialization")};
  const QString changed = change.whole(text, states);
  // Else the name of the port follows.
  return changed == text ? change.beginning(text, {QStringLiteral("COM_Connect_P1")}) : changed;
}

void show(ScreenElement &element, const QString &text) {
  if (element.text() != text) element.setText(text);
}

}  // namespace

void ShownTexts::change(SharedState &state, const TextChange &change) {
  const auto &elements = state.ObjectDictionaryArray;
  const auto changeWhole = [&](QStringView name, const QStringList &keys) {
    ScreenElement &element = elements.element(name);
    show(element, change.whole(element.text(), keys));
  };
  changeWhole(u"errormsg", {QStringLiteral("Please_choose_COM_Port_and_Connect_to_device"),
                            QStringLiteral("no_servo"), QStringLiteral("there_are_more_than_one_servo")});
  changeWhole(u"_MsgContent", {QStringLiteral("reboot"), QStringLiteral("reset")});
  changeWhole(u"WaitContent", {QStringLiteral("Serial_port_start_initialization"),
                               QStringLiteral("Please_check_device_is_ready")});
  ScreenElement &connection = elements.element(u"ConnectStatus");
  show(connection, connectionLine(connection.text(), change));
  ScreenElement &noticeView = elements.element(u"NoticeMSGview");
  show(noticeView, notice(noticeView.text(), change));

  for (const RegisterRow &row : settingRegisters()) {
    ScreenElement &field = elements.element(row.valueKey);
    field.setToolTip(change.whole(field.toolTip(), {row.toolTipKey()}));
  }
  for (QString &list : state.ErrorMsgShowToMegView) list = change.numbered(list, statusKeys());
}

QString ShownTexts::notice(const QString &notice, const TextChange &change) {
  return change.numbered(change.beginning(notice, noticeKeys()), statusKeys());
}

}  // namespace tavril
