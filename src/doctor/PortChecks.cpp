#include "doctor/PortChecks.h"

#include "doctor/ShellWord.h"
#include "platform/Error.h"

#include <cerrno>

namespace tavril::doctor {

Result checkOpening(const QString &path, const CallResult &opened) {
  const CheckId check = CheckId::Opening;
  if (!opened.failed()) return {check, State::Passed, QStringLiteral("doctor_opening"), {path}};
  if (opened.error == EBUSY || opened.error == EWOULDBLOCK) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_opening_busy"),
            {path},
            QStringLiteral("doctor_advice_find_program"),
            QStringLiteral("sudo fuser -v ") + shellWord(path)};
  }
  return {check,
          State::Failed,
          QStringLiteral("doctor_opening_failed"),
          {path, systemErrorText(opened.error)},
          QStringLiteral("doctor_advice_replug")};
}

Result checkLineSettings(const QString &path, const CallResult &taken) {
  const CheckId check = CheckId::LineSettings;
  if (!taken.failed()) return {check, State::Passed, QStringLiteral("doctor_line"), {}};
  return {check,
          State::Failed,
          QStringLiteral("doctor_line_refused"),
          {path, systemErrorText(taken.error)},
          QStringLiteral("doctor_advice_choose_port"),
          QStringLiteral("tavrilctl ports")};
}

Result checkReply(const QString &path, Asked asked, const Heard &heard, std::chrono::milliseconds patience) {
  const CheckId check = CheckId::Reply;
  if (heard.bytes > 0)
    return {check, State::Passed, QStringLiteral("doctor_reply"), {QString::number(heard.bytes)}};
  switch (asked) {
    case Asked::NotTaken:
      return {check,
              State::Failed,
              QStringLiteral("doctor_reply_not_taken"),
              {path},
              QStringLiteral("doctor_advice_replug")};
    case Asked::Gone:
      return {check,
              State::Failed,
              QStringLiteral("doctor_reply_gone"),
              {path},
              QStringLiteral("doctor_advice_cable")};
    case Asked::Done:
      break;
  }
  const double seconds = std::chrono::duration<double>(patience).count();
  return {check,
          State::Failed,
          QStringLiteral("doctor_reply_silent"),
          {QString::number(seconds, 'g', 3)},
          QStringLiteral("doctor_advice_silent")};
}

Result checkFrame(const Heard &heard) {
  const CheckId check = CheckId::Frame;
  if (!heard.isFrame && heard.isUnfinished && heard.noise == 0) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_frame_unfinished"),
            {QString::fromLatin1(heard.beginning.toHex(' ').toUpper())},
            QStringLiteral("doctor_advice_slow")};
  }
  if (!heard.isFrame) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_frame_none"),
            {QString::fromLatin1(heard.beginning.toHex(' ').toUpper())},
            QStringLiteral("doctor_advice_choose_port"),
            QStringLiteral("tavrilctl ports")};
  }
  if (heard.noise > 0) {
    return {check,
            State::Warning,
            QStringLiteral("doctor_frame_noise"),
            {QString::number(heard.noise)},
            QStringLiteral("doctor_advice_cable")};
  }
  return {check, State::Passed, QStringLiteral("doctor_frame"), {}};
}

Result checkServo(const Heard &heard) {
  const CheckId check = CheckId::Servo;
  if (heard.servos == 1) return {check, State::Passed, QStringLiteral("doctor_servo_one"), {}};
  if (heard.servos && *heard.servos > 1) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_servo_several"),
            {},
            QStringLiteral("doctor_advice_one_servo")};
  }
  if (!heard.servos && heard.error) {
    return {check,
            State::Failed,
            QStringLiteral("doctor_servo_error"),
            {QString::number(*heard.error)},
            QStringLiteral("doctor_advice_servo")};
  }
  if (!heard.servos)
    return {check,
            State::Failed,
            QStringLiteral("doctor_servo_unknown"),
            {},
            QStringLiteral("doctor_advice_servo")};
  return {
      check, State::Failed, QStringLiteral("doctor_servo_none"), {}, QStringLiteral("doctor_advice_servo")};
}

}  // namespace tavril::doctor
