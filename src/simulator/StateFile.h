#pragma once

#include <QByteArray>
#include <QString>

namespace tavril::simulator {

class ServoModel;

/// The settings of the servo in the form of `tavrilctl dump`. The position is not part of it.
QByteArray stateText(const ServoModel &servo);

/// Gives the servo the settings in the file; the others stay as they are. False with the reason in `error`;
/// some settings may have been changed then.
bool loadState(const QString &path, ServoModel &servo, QString *error);

/// Replaces the file in one step. It is an error if it is no regular file. False with the reason in `error`.
bool saveState(const QString &path, const QByteArray &text, QString *error);

}  // namespace tavril::simulator
