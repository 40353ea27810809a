#include "cli/JsonText.h"

#include <QByteArray>
#include <QJsonArray>
#include <QJsonDocument>

namespace tavril::cli {

QString jsonText(const QString &text) {
  const QByteArray array = QJsonDocument(QJsonArray{text}).toJson(QJsonDocument::Compact);
  return QString::fromUtf8(array.mid(1, array.size() - 2));
}

}  // namespace tavril::cli
