#pragma once

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>
#include <QString>

namespace tavril {

/// The text as JSON, quotes included. What the programs print is put together by hand because Qt's objects
/// sort their keys, and registers stand in the order of their numbers.
inline QString jsonText(const QString &text) {
  const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
  return QString::fromUtf8(array.mid(1, array.size() - 2));
}

}  // namespace tavril
