#include "editor/panels/WaitMain.h"

#include "editor/screen/EditorView.h"
#include "platform/Desktop.h"
#include "platform/KeyedText.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/ConnectionState.h"
#include "protocol/SharedState.h"

namespace tavril {

WaitMain::WaitMain(SharedState &state, PanelView &view, const Desktop &desktop)
    : state_(state), view_(view), desktop_(desktop) {}

void WaitMain::setTexts() {
  // Kept: C61.
  view_.element(u"WaitTittle").setText(desktop_.strings.text(u"Confirm"));
  view_.element(u"cancel").setText(desktop_.strings.text(u"CancelBT"));
}

void WaitMain::viewDidLoad() {
  setTexts();
  auto &elements = state_.ObjectDictionaryArray;
  elements.set(QStringLiteral("WaitContent"), view_.element(u"WaitContent"));
  elements.set(QStringLiteral("CloseButtonView"), view_.element(u"CloseButtonView"));
  elements.show(u"WaitContent", KeyedText(u"Serial_port_start_initialization"), desktop_.strings);
}

void WaitMain::WaitButton(const QString &identifier) {
  if (identifier == u"close") {
    state_.ToolbarFlag = QStringLiteral("MotorInitFail");
    state_.CancelConnectFlag = QStringLiteral("disconnect");
    // Said here because data from the port is ignored from now on.
    showConnection(state_, ConnectionState::NotConnected, desktop_.strings);
  }
  state_.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(true);
}

}  // namespace tavril
