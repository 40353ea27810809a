#pragma once

#include <QString>

namespace tavril {

class SerialPort;
struct Error;

/// Why a read-out of all registers has failed: one line that says what was wrong and what to do.
namespace readOutTexts {

/// Seconds without an answer after which the device counts as silent.
inline constexpr int countdownSeconds = 30;

QString noPort();
/// `error`: what the port told, if it did.
QString notOpened(const SerialPort &port, const Error *error);
QString removed(const QString &portName);
QString noServo(const QString &portName);
QString severalServos(const QString &portName);
/// Nothing has answered.
QString silent(const QString &portName);
/// Registers can be read, but the question for the servo is not answered.
QString notDetected(const QString &portName);
QString stopped(const QString &portName, int registersRead);

}  // namespace readOutTexts

}  // namespace tavril
