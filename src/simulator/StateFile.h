#pragma once

#include <QByteArray>
#include <QString>

namespace tavril::simulator {

class ServoModel;

/// The settings of the servo as a file, in the form in which `tavrilctl dump` writes them. What a servo holds
/// only while it has power is not in it.
QByteArray stateText(const ServoModel &servo);

/// Gives the servo the settings in the file; those that are not in it stay as they are. False with the reason
/// in `error`, and then some may have been taken.
bool loadState(const QString &path, ServoModel &servo, QString *error);

/// Replaces the file at one stroke; anything but a regular file is left alone. False with the reason in
/// `error`.
bool saveState(const QString &path, const QByteArray &text, QString *error);

}  // namespace tavril::simulator
