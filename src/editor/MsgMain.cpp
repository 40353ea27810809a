#include "editor/MsgMain.h"

#include "editor/EditorView.h"
#include "platform/Desktop.h"
#include "platform/Log.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "protocol/SharedState.h"

namespace tavril {

namespace {

constexpr int cancelTag = 999;
constexpr int okTag = 1000;

}  // namespace

MsgMain::MsgMain(SharedState &state, CommandSender &sender, PanelView &view, const Desktop &desktop)
    : state_(state), view_(view), desktop_(desktop), FunctionCMD(state, sender, desktop) {}

void MsgMain::setTexts() {
  // Kept: C60.
  view_.element(u"MsgTittle").setText(desktop_.strings.text(u"warning"));
  view_.element(u"cancel_lab").setText(desktop_.strings.text(u"CancelBT"));
  view_.element(u"ok_lab").setText(desktop_.strings.text(u"Confirm"));
}

void MsgMain::viewDidLoad() {
  setTexts();
  state_.ObjectDictionaryArray.set(QStringLiteral("_MsgContent"), view_.element(u"MsgContent"));
}

void MsgMain::MsgButton(const QString &identifier) {
  if (identifier == u"cancel") {
    desktop_.log.write(identifier);
    view_.setLabelColor(cancelTag, LabelColor::Black);
  } else if (identifier == u"ok") {
    desktop_.log.write(identifier);
    view_.setLabelColor(okTag, LabelColor::Black);
    // Kept: C68.
    const QString question = state_.ObjectDictionaryArray.element(u"_MsgContent").text();
    if (question == desktop_.strings.text(u"reboot")) {
      FunctionCMD.Reboot_Servo();
    } else if (question == desktop_.strings.text(u"reset")) {
      FunctionCMD.ResetServotoDefaultSetting();
    }
  }
  state_.ObjectDictionaryArray.element(u"ContainerView_MsgView").setHidden(true);
}

}  // namespace tavril
