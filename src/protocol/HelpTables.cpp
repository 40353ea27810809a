#include "protocol/HelpTables.h"

#include "platform/Log.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"

#include <QString>
#include <QStringList>
#include <QStringView>

#include <array>

namespace tavril {

namespace {

// One text, or the texts of the register's choices.
using HelpText = std::array<QStringView, 3>;

// Kept: C2.
constexpr std::array<HelpText, wire::settingCount> helpTexts{{
    // Kept: C3.
    {u"系統沒有馬達", u"系統有兩顆以上的馬達"},
    {u"Only STAT command reply", u"Only EEPROM/RAM RAED and STAT commands reply", u"All commands reply"},
    {u"Show System Error Alarm LED", u"User Control LED"},
    {u"Disable Shut Down Operation",
     u"Shut Down Servo When Voltage/Current/Temperature Is Over The Setting Value"},
    {u"The limitation of Orvane servo operating temperature. The value is in degrees Celsius."},
    {u"The minimum value of Orvane servo operating voltage."},
    {u"The maximum value of Orvane servo operating voltage."},
    {u"The max value of Orvane servo operating current."},
    {u"Servo position control parameter, proportional gain constant Kp. Output torque applied to motor is "
     u"adjusted by multiplying Kp and current position error"},
    {u"Servo position control parameter, integral gain constant Ki. Output torque applied to motor is "
     u"adjusted by multiplying Ki and summation of error over operating time."},
    // Kept: C4.
    {u"Servo position control parameter, derivative gain constant Ki. Output torque applied to motor is "
     u"adjusted by multiplying Kd and slope of error over operating time."},
    {u"Over temperature error check period. The value is 10ms/Tick. For example, 120 ms is represented as "
     u"value 12."},
    {u"Over/under voltage error check period. The value is 10ms/Tick. For example, 120 ms is represented as "
     u"value 12."},
    {u"Over current error check period. The value is 10ms/Tick. For example, 120 ms is represented as "
     u"value 12."},
    // Kept: C5.
    {u"This value shows present supplying current. The value is 200 times the actual current."},
}};
static_assert(!helpTexts.back().front().isEmpty(), "each setting has a help text");

HelpEntry entryOf(const HelpText &help) {
  QStringList texts;
  for (const QStringView text : help) {
    if (!text.isEmpty()) texts.append(text.toString());
  }
  if (texts.size() == 1) return texts.front();
  return texts;
}

}  // namespace

void buildHelpTables(SharedState &state, Log &log) {
  state.Key.clear();
  for (const RegisterRow &row : settingRegisters()) state.Key.append(row.helpKey.toString());
  log.write(QStringLiteral("Key count=%1").arg(state.Key.size()));

  state.Msg.clear();
  for (std::size_t i = 0; i < helpTexts.size(); ++i) {
    const QString &key = state.Key.at(static_cast<qsizetype>(i));
    state.Msg.insert(key, entryOf(helpTexts[i]));
    log.write(QStringLiteral("i=%1,%2").arg(QString::number(i), key));
  }
}

}  // namespace tavril
