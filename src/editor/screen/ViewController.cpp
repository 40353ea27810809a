#include "editor/screen/ViewController.h"

#include "editor/screen/EditorView.h"
#include "platform/BlockingWait.h"
#include "platform/Desktop.h"
#include "platform/IntegerValue.h"
#include "platform/KeyedText.h"
#include "platform/Log.h"
#include "platform/ModalAlert.h"
#include "platform/ScreenElement.h"
#include "platform/StringTable.h"
#include "platform/Timers.h"
#include "protocol/ConnectionState.h"
#include "protocol/Function.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"
#include "wire/Registers.h"

#include <QStringList>

#include <QLatin1String>
#include <array>
#include <chrono>
#include <utility>
#include <variant>

namespace tavril {

namespace {

constexpr std::chrono::milliseconds tickInterval{10};
constexpr std::chrono::seconds countdownInterval{1};
constexpr std::chrono::milliseconds flashTime{100};
constexpr std::chrono::milliseconds sweepPause{100};
constexpr int countdownStart = 30;

/// The labels whose texts are looked up on each layout pass, in this order, with the keys of their texts.
struct LabelRow {
  QStringView name;
  QStringView key;
};

constexpr std::array<QStringView, 3> titles{u"setting_list", u"motor_parameter", u"value_setting"};
constexpr std::array<QStringView, 8> others{u"motor_kx_90", u"position",     u"relax", u"capture",
                                            u"motor_set",   u"detail_about", u"read",  u"detail_set"};

/// The captions of the registers come between the titles and the other labels.
constexpr auto labels = [] {
  std::array<LabelRow, titles.size() + wire::registers.size() + others.size()> all;
  auto *next = all.begin();
  for (const QStringView name : titles) *next++ = {name, name};
  for (const wire::Register &row : wire::registers) {
    *next++ = {row.label.empty() ? row.keys.name : row.label, row.keys.name};
  }
  for (const QStringView name : others) *next++ = {name, name};
  return all;
}();

QString helpText(const HelpEntry &entry) {
  if (const auto *text = std::get_if<QString>(&entry)) return *text;
  return listText(std::get<QStringList>(entry));
}

}  // namespace

struct ViewController::Button {
  QStringView label;
  QStringView identifier;
  int tag;
  void (*press)(ViewController &controller);
};

std::span<const ViewController::Button> ViewController::buttons() {
  static constexpr Button all[]{
      {u"relax", u"relax", 100, [](ViewController &c) { c.FunctionCMD_->Release_Servo(); }},
      {u"capture", u"capture", 101, [](ViewController &c) { c.FunctionCMD_->ReadServoPosition(); }},
      {u"motor_set", u"motorset", 102, [](ViewController &c) { c.sendPosition(); }},
      {u"read", u"read", 103, [](ViewController &c) { c.FunctionCMD_->ReadMotorParameter(1); }},
      {u"detail_set", u"detailset", 104, [](ViewController &c) { c.sweep(); }},
  };
  return all;
}

ViewController::ViewController(SharedState &state, CommandSender &appdelegate, EditorView &view,
                               const Desktop &desktop)
    : state_(state),
      view_(view),
      desktop_(desktop),
      FunctionCMD_(std::make_shared<Function>(state, appdelegate, desktop)),
      knob_(view),
      valueEntry_(state, desktop),
      hoverNotices_(state, view, desktop) {
  setFunctionCMD(FunctionCMD_);
}

ViewController::~ViewController() {
  if (tick_) tick_->stop();
  stopCountdowns();
  for (const auto &timer : flashes_) timer->stop();
  // The elements are deleted with the view, so they must not be found any more.
  state_.ObjectDictionaryArray = ValueStore();
  state_.textFieldValue.clear();
}

void ViewController::setFunctionCMD(std::shared_ptr<Function> commands) {
  FunctionCMD_ = std::move(commands);
  positionEntry_ = std::make_unique<PositionEntry>(state_, view_, knob_, *FunctionCMD_, desktop_);
  positionDial_ = std::make_unique<PositionDial>(state_, view_, knob_, *FunctionCMD_, desktop_);
}

// ------------------------------------------------------------------------------------------------ start-up

void ViewController::viewDidLoad() {
  state_.ObjectDictionaryArray = ValueStore();
  view_.element(u"ContrainerView_MsgView").setHidden(true);
  view_.element(u"ContrainerView_WaitView").setHidden(true);
  registerElements();
  state_.ErrorMsgShowToMegView = {{QStringLiteral("Error"), {}}, {QStringLiteral("Detail"), {}}};
  state_.ObjectDictionaryArray.show(u"errormsg", KeyedText(u"Please_choose_COM_Port_and_Connect_to_device"),
                                    desktop_.strings);
  showConnection(state_, ConnectionState::NotConnected, desktop_.strings);
  state_.limitFlag = QLatin1String("");
  hoverNotices_.reset();
  state_.TextMouseFlag = QLatin1String("");
  cmdcnt = 1;
  knob_.takeCentre();
  logHelpTables();
  cnt = countdownStart;
  tick_ = desktop_.timers.repeating(tickInterval, [this] { update(); });
}

void ViewController::registerElements() {
  auto &elements = state_.ObjectDictionaryArray;
  for (const char16_t *name : {u"TXcmd", u"RXcmd", u"NoticeMSGview", u"errormsg", u"ConnectStatus"}) {
    elements.set(QString::fromUtf16(name), view_.element(name));
  }
  // Kept: C59.
  elements.set(QStringLiteral("ContainerView_MsgView"), view_.element(u"ContrainerView_MsgView"));
  elements.set(QStringLiteral("ContrainerView_WaitView"), view_.element(u"ContrainerView_WaitView"));
  state_.textFieldValue.clear();
  for (const RegisterRow &row : registerCatalogue()) {
    ScreenElement &field = view_.element(row.valueKey);
    elements.set(row.valueKey.toString(), field);
    if (!row.entryKey.isEmpty()) state_.textFieldValue.insert(row.entryKey.toString(), EntryValue(field));
  }
}

void ViewController::logHelpTables() {
  QString text;
  for (const QString &key : std::as_const(state_.Key)) {
    text += key + u'=' + helpText(state_.Msg.value(key)) + u'\n';
  }
  desktop_.log.write(u'\n' + text);
}

void ViewController::viewWillLayout() {
  view_.setTitle(desktop_.strings.text(u"tavril"));
  for (const LabelRow &label : labels) {
    view_.element(label.name).setText(desktop_.strings.text(label.key));
    // Kept: C71.
    view_.setLabelFontSize(label.name, desktop_.strings.text(u"fontsize").toDouble());
  }
}

void ViewController::languageDidChange() {
  state_.ObjectDictionaryArray.showAgain(desktop_.strings);
  for (const RegisterRow &row : settingRegisters()) {
    ScreenElement &field = view_.element(row.valueKey);
    if (!field.toolTip().isEmpty()) field.setToolTip(desktop_.strings.text(row.toolTipKey()));
  }
  viewWillLayout();
}

// ---------------------------------------------------------------------------------------------- the tick

void ViewController::update() {
  if (state_.ToolbarFlag.isEmpty()) return;
  const QString request = state_.ToolbarFlag;
  if (carryOut(request)) state_.ToolbarFlag = QLatin1String("");
}

/// Returns true if the caller must clear the word. Requests that open a panel clear it themselves.
bool ViewController::carryOut(const QString &request) {
  if (request == u"RebootServo") {
    askFor(u"reboot");
    return false;
  }
  if (request == u"ResetServo") {
    askFor(u"reset");
    return false;
  }
  if (request == u"InitSerialPort") {
    cnt = countdownStart;
    // Kept: C62.
    TimerCnt_.push_back(desktop_.timers.repeating(countdownInterval, [this] { ConnectTimeout(); }));
  } else if (request == u"MotorInitOK") {
    setUsable(true);
    stopCountdowns();
  } else if (request == u"MotorInitFail") {
    setUsable(false);
    stopCountdowns();
  } else if (request == u"DetectionMotro") {
    FunctionCMD_->Init_Servo();
  } else if (request == u"UpdateMotorValue") {
    UpdateMotorValue(integerValueOf(state_.returnSTR));
  } else {
    return false;  // Kept: C63.
  }
  return true;
}

void ViewController::askFor(QStringView questionKey) {
  state_.ToolbarFlag = QLatin1String("");
  state_.ObjectDictionaryArray.show(u"_MsgContent", KeyedText(questionKey), desktop_.strings);
  CreateMSGview(state_.CanUseTavril);
}

void ViewController::setUsable(bool usable) {
  for (const Button &button : buttons()) {
    if (ScreenElement *control = view_.controlWithTag(button.tag)) control->setEnabled(usable);
  }
  for (const RegisterRow &row : settingRegisters()) view_.element(row.valueKey).setEnabled(usable);
  for (const RegisterRow &row : settingRegisters()) {
    view_.element(row.valueKey).setToolTip(usable ? desktop_.strings.text(row.toolTipKey()) : QString());
  }
}

void ViewController::stopCountdowns() {
  for (const auto &timer : TimerCnt_) timer->stop();
  TimerCnt_.clear();
}

void ViewController::UpdateMotorValue(int position) {
  if (position >= dial::positionEnd) return;  // Kept: C72.
  desktop_.log.write(
      QString::asprintf("str=%d,angle=%f", position, static_cast<double>(dial::travelAngle(position))));
  knob_.showPosition(position);
  view_.element(u"angle").setText(QString::number(position));
}

// ----------------------------------------------------------------------------------------- connection
// attempt

void ViewController::ConnectTimeout() {
  --cnt;
  desktop_.log.write(QStringLiteral("cnt=%1").arg(cnt));
  if (cnt >= 1) return;
  stopCountdowns();
  auto &elements = state_.ObjectDictionaryArray;
  elements.element(u"CloseButtonView").setHidden(false);
  elements.show(u"WaitContent", KeyedText(u"Please_check_device_is_ready"), desktop_.strings);
  showConnection(state_, ConnectionState::NotConnected, desktop_.strings);
  cnt = countdownStart;
}

// --------------------------------------------------------------------------------------------------- buttons

void ViewController::LabelTouchEvent(const QString &identifier) {
  desktop_.log.write(identifier);
  for (const Button &button : buttons()) {
    if (identifier != button.identifier) continue;
    view_.setLabelColor(button.label, LabelColor::Black);
    button.press(*this);
  }
  flash();
}

void ViewController::flash() {
  const auto place = flashes_.emplace(flashes_.end());
  *place = desktop_.timers.oneShot(flashTime, [this, place] {
    flashes_.erase(place);
    Colorreset();
  });
}

// Kept: C64.
void ViewController::sendPosition() {
  FunctionCMD_->SetServoPosition(view_.element(u"angle").integerValue());
}

// Kept: C65.
void ViewController::sweep() {
  cmdcnt = 1;
  while (cmdcnt < wire::settingCount + 1) {
    FunctionCMD_->WriteMotorParameter(cmdcnt);
    desktop_.blockingWait.wait(sweepPause);
    ++cmdcnt;
  }
  ++cmdcnt;
  if (cmdcnt > wire::settingCount) cmdcnt = 1;
}

void ViewController::Colorreset() {
  for (const Button &button : buttons()) view_.setLabelColor(button.label, LabelColor::White);
}

void ViewController::test() {
  FunctionCMD_->ReadServoPosition();
}

// ---------------------------------------------------------------------------------------------------- panels

void ViewController::CreateMSGview(const QString &flag) {
  desktop_.log.write(flag);
  ScreenElement &panel = view_.element(u"ContrainerView_MsgView");
  if (flag == u"true") {
    panel.setHidden(false);
    return;
  }
  panel.setHidden(true);
  logAnswer(desktop_.alert.run({desktop_.strings.text(u"Error"),
                                desktop_.strings.text(u"Not_connect"),
                                {desktop_.strings.text(u"Confirm")}}));
}

void ViewController::actIndicatorBegin() {
  logAnswer(desktop_.alert.run({QStringLiteral("Please Wait..."), QString(), {}}));
}

void ViewController::logAnswer(int answer) {
  if (answer == ModalAlert::firstButton) desktop_.log.write(QStringLiteral("OK"));
  if (answer == ModalAlert::secondButton) desktop_.log.write(QStringLiteral("Cancel"));
}

}  // namespace tavril
