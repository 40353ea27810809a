#include "doctor/Result.h"

namespace tavril::doctor {

QString nameOf(CheckId check) {
  switch (check) {
    case CheckId::UsbAdapter:
      return QStringLiteral("usb-adapter");
    case CheckId::Driver:
      return QStringLiteral("driver");
    case CheckId::Node:
      return QStringLiteral("node");
    case CheckId::Permission:
      return QStringLiteral("permission");
    case CheckId::Holder:
      return QStringLiteral("holder");
    case CheckId::Daemons:
      return QStringLiteral("daemons");
    case CheckId::Opening:
      return QStringLiteral("opening");
    case CheckId::LineSettings:
      return QStringLiteral("line-settings");
    case CheckId::Reply:
      return QStringLiteral("reply");
    case CheckId::Frame:
      return QStringLiteral("frame");
    case CheckId::Servo:
      return QStringLiteral("servo");
  }
  return {};
}

QString titleKeyOf(CheckId check) {
  return QStringLiteral("doctor_check_") + nameOf(check).replace(u'-', u'_');
}

QString nameOf(State state) {
  switch (state) {
    case State::Passed:
      return QStringLiteral("passed");
    case State::Warning:
      return QStringLiteral("warning");
    case State::Failed:
      return QStringLiteral("failed");
    case State::Skipped:
      return QStringLiteral("skipped");
  }
  return {};
}

}  // namespace tavril::doctor
