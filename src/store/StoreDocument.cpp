#include "store/StoreDocument.h"

#include "store/ManagedObjectModel.h"
#include "store/StrictXml.h"

#include <QLocale>
#include <QMetaType>
#include <QStringView>
#include <QVariant>
#include <QXmlStreamWriter>

#include <utility>

namespace tavril {

namespace {

constexpr QStringView format = u"1";
// Leaves room for the numbers of new objects.
constexpr ObjectId largestId = 1'000'000'000'000'000;

QString textOf(const QVariant &value) {
  // The shortest text that reads back as the same number.
  if (value.metaType() == QMetaType::fromType<double>()) {
    return QString::number(value.toDouble(), 'g', QLocale::FloatingPointShortest);
  }
  return value.toString();
}

/// The value that a text stands for, or an invalid one when it stands for none of this type.
QVariant valueOf(const QString &text, QMetaType type) {
  bool valid = true;
  QVariant value;
  if (type == QMetaType::fromType<QString>()) {
    value = text;
  } else if (type == QMetaType::fromType<qint64>()) {
    value = text.toLongLong(&valid);
  } else if (type == QMetaType::fromType<double>()) {
    value = text.toDouble(&valid);
  } else if (type == QMetaType::fromType<bool>()) {
    value = text == u"true";
    valid = text == u"true" || text == u"false";
  }
  return valid ? value : QVariant();
}

void parseAttribute(StrictXml &xml, const ManagedObjectModel &model, ManagedObject &object) {
  const QString name = xml.attribute(u"name");
  const QVariant value = valueOf(xml.attribute(u"value"), model.typeOf(object.entityName, name));
  if (object.values.contains(name)) xml.fail(QStringLiteral("A value appears twice."));
  if (!model.accepts(object.entityName, name, value)) {
    xml.fail(QStringLiteral("A value does not fit the data model."));
  }
  object.values.insert(name, value);
  xml.endElement();
}

void parseObject(StrictXml &xml, const ManagedObjectModel &model, ObjectTable &objects) {
  bool valid = false;
  const ObjectId id = xml.attribute(u"id").toLongLong(&valid);
  ManagedObject object{xml.attribute(u"entity"), {}};
  if (!valid || id < 1 || id > largestId) xml.fail(QStringLiteral("The number of an object is not valid."));
  if (!model.hasEntity(object.entityName)) {
    xml.fail(QStringLiteral("The data model does not know the kind of an object."));
  }
  while (xml.nextElement(u"attribute")) parseAttribute(xml, model, object);
  if (!objects.emplace(id, std::move(object)).second) {
    xml.fail(QStringLiteral("Two objects have the same number."));
  }
}

}  // namespace

QByteArray StoreDocument::write(const ManagedObjectModel &model, const ObjectTable &objects) {
  QByteArray bytes;
  QXmlStreamWriter writer(&bytes);
  writer.setAutoFormatting(true);
  writer.writeStartDocument();
  writer.writeStartElement(QStringLiteral("store"));
  writer.writeAttribute(QStringLiteral("format"), format.toString());
  writer.writeAttribute(QStringLiteral("model"), model.name());
  for (const auto &[id, object] : objects) {
    writer.writeStartElement(QStringLiteral("object"));
    writer.writeAttribute(QStringLiteral("id"), QString::number(id));
    writer.writeAttribute(QStringLiteral("entity"), object.entityName);
    for (auto value = object.values.cbegin(); value != object.values.cend(); ++value) {
      writer.writeEmptyElement(QStringLiteral("attribute"));
      writer.writeAttribute(QStringLiteral("name"), value.key());
      // An attribute and not text, for in attributes line ends and blanks stay as they are.
      writer.writeAttribute(QStringLiteral("value"), textOf(*value));
    }
    writer.writeEndElement();
  }
  writer.writeEndDocument();
  return bytes;
}

bool StoreDocument::parse(const QByteArray &bytes, const ManagedObjectModel &model, ObjectTable &objects,
                          QString &problem) {
  if (bytes.size() > largestSize) {
    problem = QStringLiteral("It is larger than 16 MiB.");
    return false;
  }
  StrictXml xml(bytes);
  if (xml.nextElement(u"store")) {
    if (xml.attribute(u"format") != format) xml.fail(QStringLiteral("The format is not known."));
    if (xml.attribute(u"model") != model.name()) xml.fail(QStringLiteral("The file has another data model."));
  }
  ObjectTable found;
  while (xml.nextElement(u"object")) parseObject(xml, model, found);
  if (!xml.endDocument()) {
    problem = xml.problem();
    return false;
  }
  objects = std::move(found);
  return true;
}

}  // namespace tavril
