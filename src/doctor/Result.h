#pragma once

#include <QString>
#include <QStringList>

#include <array>

namespace tavril::doctor {

/// What is looked at, in this order.
enum class CheckId {
  UsbAdapter,
  Driver,
  Node,
  Permission,
  Holder,
  Daemons,
  Opening,
  LineSettings,
  Reply,
  Frame,
  Servo,
};

inline constexpr std::array<CheckId, 11> allChecks{
    CheckId::UsbAdapter, CheckId::Driver,  CheckId::Node,    CheckId::Permission,
    CheckId::Holder,     CheckId::Daemons, CheckId::Opening, CheckId::LineSettings,
    CheckId::Reply,      CheckId::Frame,   CheckId::Servo};

/// The name for scripts, "usb-adapter".
QString nameOf(CheckId check);
/// The key of what the check is called.
QString titleKeyOf(CheckId check);

enum class State {
  Passed,
  Warning,  ///< works, but may be the reason when something does not
  Failed,
  Skipped,  ///< not looked at
};

/// The name for scripts, "passed".
QString nameOf(State state);

/// What a check has found, and what to do about it. The texts are keys of string tables.
struct Result {
  CheckId check = CheckId::UsbAdapter;
  State state = State::Skipped;
  QString finding;       ///< key
  QStringList values;    ///< for the places %1$@, %2$@ ... of both texts
  QString advice = {};   ///< key; empty when there is nothing to do
  QString command = {};  ///< that does it in a shell; empty when there is none

  bool operator==(const Result &) const = default;
};

}  // namespace tavril::doctor
