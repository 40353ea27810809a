#include "editor/panels/WaitMain.h"

#include "editor/screen/EditorView.h"
#include "platform/Desktop.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/SharedState.h"

namespace tavril {

WaitMain::WaitMain(SharedState &state, PanelView &view, const Desktop &desktop)
    : state_(state), view_(view), desktop_(desktop) {}

void WaitMain::setTexts() {
  // Meant: the title is the text of the confirm key.
  view_.element(u"WaitTittle").setText(desktop_.strings.text(u"Confirm"));
  view_.element(u"cancel").setText(desktop_.strings.text(u"CancelBT"));
}

void WaitMain::viewDidLoad() {
  setTexts();
  view_.element(u"WaitContent").setText(desktop_.strings.text(u"Serial_port_start_initialization"));
  state_.ObjectDictionaryArray.set(QStringLiteral("WaitContent"), view_.element(u"WaitContent"));
  state_.ObjectDictionaryArray.set(QStringLiteral("CloseButtonView"), view_.element(u"CloseButtonView"));
}

void WaitMain::WaitButton(const QString &identifier) {
  if (identifier == u"close") {
    state_.ToolbarFlag = QStringLiteral("MotorInitFail");
    state_.CancelConnectFlag = QStringLiteral("disconnect");
    // Nobody else says so: what comes from the port counts no more.
    state_.ObjectDictionaryArray.element(u"ConnectStatus").setText(desktop_.strings.text(u"Not_connect"));
  }
  state_.ObjectDictionaryArray.element(u"ContrainerView_WaitView").setHidden(true);
}

}  // namespace tavril
