#include "simulator/StateFile.h"

#include "simulator/ServoModel.h"

#include <QFile>
#include <QFileInfo>
#include <QIODevice>
#include <QJsonDocument>
#include <QJsonObject>
#include <QJsonParseError>
#include <QJsonValue>
#include <QSaveFile>
#include <QStringList>

#include <QLatin1String>
#include <algorithm>
#include <cstdint>

namespace tavril::simulator {
namespace {

constexpr qint64 largestFile = 1 << 20;

bool fail(QString *error, const QString &path, const QString &reason) {
  *error = QStringLiteral("%1: %2").arg(path, reason);
  return false;
}

int valueOf(const ServoModel &servo, int number) {
  const std::uint16_t word = servo.read(number).value_or(0);
  return number == registers::calibrationAngle ? static_cast<std::int16_t>(word) : int{word};
}

int numberOf(const QString &key) {
  // The correct spelling is accepted as well.
  const QString name = key == u"max_temperature" ? QStringLiteral("max_tempertaure") : key;
  for (std::size_t i = 0; i < registers::settings.size(); ++i) {
    if (name == QLatin1String(registers::settings[i].key)) return static_cast<int>(i) + 1;
  }
  return 0;
}

}  // namespace

QByteArray stateText(const ServoModel &servo) {
  QStringList rows;
  for (int number = 1; number <= registers::settingCount; ++number) {
    rows.append(QStringLiteral("    \"%1\": %2")
                    .arg(QString::fromLatin1(registers::settings[static_cast<std::size_t>(number) - 1].key))
                    .arg(valueOf(servo, number)));
  }
  return QStringLiteral(
             "{\n  \"format\": \"tavril-servo-settings\",\n  \"version\": 1,\n  \"settings\": {\n%1\n  "
             "}\n}\n")
      .arg(rows.join(QStringLiteral(",\n")))
      .toUtf8();
}

bool loadState(const QString &path, ServoModel &servo, QString *error) {
  QFile file(path);
  // Checked first, because opening a device or a pipe may have an effect or block.
  if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
    return fail(error, path, QStringLiteral("is not a regular file"));
  }
  if (!file.open(QIODevice::ReadOnly)) return fail(error, path, file.errorString());
  QJsonParseError problem{};
  const QJsonDocument document = QJsonDocument::fromJson(file.read(largestFile), &problem);
  if (problem.error != QJsonParseError::NoError) return fail(error, path, problem.errorString());
  const QJsonValue settings = document.object().value(QStringLiteral("settings"));
  if (!settings.isObject()) return fail(error, path, QStringLiteral("there are no settings in it"));
  const QJsonObject values = settings.toObject();
  for (auto it = values.begin(); it != values.end(); ++it) {
    const int number = numberOf(it.key());
    const QJsonValue value = it->isObject() ? it->toObject().value(QStringLiteral("value")) : it.value();
    constexpr int none = -32768;
    const int typed = value.toInt(none);
    if (number == 0) return fail(error, path, QStringLiteral("\"%1\" is not a setting").arg(it.key()));
    if (typed == none || typed > 32767 || !servo.write(number, static_cast<std::uint16_t>(typed))) {
      return fail(error, path, QStringLiteral("the value of \"%1\" is not valid").arg(it.key()));
    }
  }
  return true;
}

bool saveState(const QString &path, const QByteArray &text, QString *error) {
  if (QFileInfo::exists(path) && !QFileInfo(path).isFile()) {
    return fail(error, path, QStringLiteral("is not a regular file"));
  }
  QSaveFile file(path);
  if (file.open(QIODevice::WriteOnly) && file.write(text) == text.size() && file.commit()) return true;
  return fail(error, path, file.errorString());
}

}  // namespace tavril::simulator
