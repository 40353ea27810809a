#include "store/ManagedObjectModel.h"

#include "store/ObjectStoreError.h"
#include "store/StrictXml.h"

#include <QFile>
#include <QIODevice>
#include <QRegularExpression>

#include <cmath>

namespace tavril {

namespace {

Error unreadable(const QString &reason) {
  return objectStoreError(ObjectStoreError::ModelUnreadable,
                          QStringLiteral("The data model could not be loaded."), reason);
}

QMetaType typeNamed(const QString &name) {
  if (name == u"string") return QMetaType::fromType<QString>();
  if (name == u"integer") return QMetaType::fromType<qint64>();
  if (name == u"double") return QMetaType::fromType<double>();
  if (name == u"boolean") return QMetaType::fromType<bool>();
  return {};
}

/// The name attribute of the current element, which must be an identifier that is not taken yet.
template <typename Map>
QString newName(StrictXml &xml, const Map &taken) {
  static const QRegularExpression identifier(QStringLiteral("\\A[A-Za-z_][A-Za-z0-9_]{0,127}\\z"));
  QString name = xml.attribute(u"name");
  if (!identifier.match(name).hasMatch()) xml.fail(QStringLiteral("A name is not valid."));
  if (taken.contains(name)) xml.fail(QStringLiteral("The name \"%1\" appears twice.").arg(name));
  return name;
}

}  // namespace

std::optional<ManagedObjectModel> ManagedObjectModel::load(const QString &path, Error &error) {
  QFile file(path);
  if (!file.open(QIODevice::ReadOnly)) {
    error = unreadable(QStringLiteral("%1: %2").arg(path, file.errorString()));
    return {};
  }
  return parse(file.read(largestSize + 1), error);
}

std::optional<ManagedObjectModel> ManagedObjectModel::parse(const QByteArray &bytes, Error &error) {
  if (bytes.size() > largestSize) {
    error = unreadable(QStringLiteral("It is larger than 1 MiB."));
    return {};
  }
  ManagedObjectModel model;
  StrictXml xml(bytes);
  if (xml.nextElement(u"model")) model.name_ = xml.attribute(u"name");
  while (xml.nextElement(u"entity")) {
    Attributes &attributes = model.entities_[newName(xml, model.entities_)];
    while (xml.nextElement(u"attribute")) {
      const QString name = newName(xml, attributes);
      const QMetaType type = typeNamed(xml.attribute(u"type"));
      if (!type.isValid()) xml.fail(QStringLiteral("The type of \"%1\" is unknown.").arg(name));
      attributes.insert(name, type);
      xml.endElement();
    }
  }
  if (!xml.endDocument()) {
    error = unreadable(xml.problem());
    return {};
  }
  return model;
}

QMetaType ManagedObjectModel::typeOf(const QString &entity, const QString &attribute) const {
  return entities_.value(entity).value(attribute);
}

bool ManagedObjectModel::accepts(const QString &entity, const QString &attribute,
                                 const QVariant &value) const {
  const QMetaType type = typeOf(entity, attribute);
  if (!type.isValid() || value.metaType() != type) return false;
  return type != QMetaType::fromType<double>() || std::isfinite(value.toDouble());
}

}  // namespace tavril
