#include "protocol/HelpTables.h"

#include "platform/Log.h"
#include "protocol/RegisterCatalogue.h"
#include "protocol/SharedState.h"

#include <QString>
#include <QStringList>

#include <array>

namespace tavril {

namespace {

// Kept: C2.
std::array<HelpEntry, wire::settingCount> helpTexts() {
  return {{
      // Kept: C3.
      QStringList{QStringLiteral("系統沒有馬達"), QStringLiteral("系統有兩顆以上的馬達")},
      QStringList{QStringLiteral("Only STAT command reply"),
                  QStringLiteral("Only EEPROM/RAM RAED and STAT commands reply"),
                  QStringLiteral("All commands reply")},
      QStringList{QStringLiteral("Show System Error Alarm LED"), QStringLiteral("User Control LED")},
      QStringList{QStringLiteral("Disable Shut Down Operation"),
                  QStringLiteral("Shut Down Servo When Voltage/Current/Temperature Is Over The Setting "
                                 "Value")},
      QStringLiteral("The limitation of Orvane servo operating temperature. The value is in degrees "
                     "Celsius."),
      QStringLiteral("The minimum value of Orvane servo operating voltage."),
      QStringLiteral("The maximum value of Orvane servo operating voltage."),
      QStringLiteral("The max value of Orvane servo operating current."),
      QStringLiteral("Servo position control parameter, proportional gain constant Kp. Output torque "
                     "applied to motor is adjusted by multiplying Kp and current position error"),
      QStringLiteral("Servo position control parameter, integral gain constant Ki. Output torque applied "
                     "to motor is adjusted by multiplying Ki and summation of error over operating time."),
      // Kept: C4.
      QStringLiteral("Servo position control parameter, derivative gain constant Ki. Output torque applied "
                     "to motor is adjusted by multiplying Kd and slope of error over operating time."),
      QStringLiteral("Over temperature error check period. The value is 10ms/Tick. For example, 120 ms is "
                     "represented as value 12."),
      QStringLiteral("Over/under voltage error check period. The value is 10ms/Tick. For example, 120 ms "
                     "is represented as value 12."),
      QStringLiteral("Over current error check period. The value is 10ms/Tick. For example, 120 ms is "
                     "represented as value 12."),
      // Kept: C5.
      QStringLiteral("This value shows present supplying current. The value is 200 times the actual "
                     "current."),
  }};
}

}  // namespace

void buildHelpTables(SharedState &state, Log &log) {
  state.Key.clear();
  for (const RegisterRow &row : settingRegisters()) state.Key.append(row.helpKey.toString());
  log.write(QStringLiteral("Key count=%1").arg(state.Key.size()));

  state.Msg.clear();
  const auto texts = helpTexts();
  for (std::size_t i = 0; i < texts.size(); ++i) {
    const QString &key = state.Key.at(static_cast<qsizetype>(i));
    state.Msg.insert(key, texts[i]);
    log.write(QStringLiteral("i=%1,%2").arg(QString::number(i), key));
  }
}

}  // namespace tavril
