#include "store/StrictXml.h"

#include <QXmlStreamAttributes>

namespace tavril {

namespace {

constexpr qsizetype mostQuoted = 80;

}  // namespace

QXmlStreamReader::TokenType StrictXml::nextTag() {
  while (!reader_.atEnd()) {
    const QXmlStreamReader::TokenType token = reader_.readNext();
    switch (token) {
      case QXmlStreamReader::StartElement:
      case QXmlStreamReader::EndElement:
      case QXmlStreamReader::EndDocument:
        return token;
      case QXmlStreamReader::DTD:
      case QXmlStreamReader::EntityReference:
        fail(QStringLiteral("Document types and entities are not allowed."));
        break;
      case QXmlStreamReader::Characters:
        if (!reader_.isWhitespace()) fail(QStringLiteral("This text is not expected here."));
        break;
      default:
        break;
    }
  }
  return QXmlStreamReader::Invalid;
}

bool StrictXml::nextElement(QStringView name) {
  if (nextTag() != QXmlStreamReader::StartElement) return false;
  if (reader_.qualifiedName() != name) {
    fail(QStringLiteral("The element \"%1\" is not expected here.").arg(reader_.name().left(mostQuoted)));
    return false;
  }
  return true;
}

bool StrictXml::endElement() {
  const QXmlStreamReader::TokenType token = nextTag();
  if (token == QXmlStreamReader::StartElement) fail(QStringLiteral("This element is not expected here."));
  return token == QXmlStreamReader::EndElement;
}

bool StrictXml::endDocument() {
  return nextTag() == QXmlStreamReader::EndDocument && !failed();
}

QString StrictXml::attribute(QStringView name) {
  const QXmlStreamAttributes attributes = reader_.attributes();
  if (!attributes.hasAttribute(name.toString())) {
    fail(QStringLiteral("The attribute \"%1\" is missing.").arg(name));
  }
  return attributes.value(name.toString()).toString();
}

void StrictXml::fail(const QString &problem) {
  if (!failed()) reader_.raiseError(problem);
}

QString StrictXml::problem() const {
  return QStringLiteral("Line %1: %2").arg(reader_.lineNumber()).arg(reader_.errorString());
}

}  // namespace tavril
