#include "cli/JsonPlaces.h"

#include <QByteArrayView>
#include <QJsonArray>
#include <QJsonDocument>

namespace tavril::cli {

TextPlace placeOf(const QByteArray &text, qsizetype offset) {
  TextPlace place;
  for (qsizetype i = 0; i < offset && i < text.size(); ++i) {
    const auto byte = static_cast<unsigned char>(text[i]);
    if (byte == '\n') {
      ++place.line;
      place.column = 1;
    } else if ((byte & 0xC0) != 0x80) {  // a byte that continues a character counts for nothing
      ++place.column;
    }
  }
  return place;
}

JsonPlaces::JsonPlaces(const QByteArray &document) : document_(document) {
  value(QString());
}

void JsonPlaces::value(const QString &path) {
  skipBlanks();
  if (here() == '{') {
    object(path);
  } else if (here() == '[') {
    array(path);
  } else if (here() == '"') {
    string();
  } else {
    while (at_ < document_.size() && !QByteArrayView(",]} \t\r\n").contains(here())) ++at_;
  }
}

void JsonPlaces::object(const QString &path) {
  ++at_;
  skipBlanks();
  while (here() == '"') {
    const TextPlace place = placeOf(document_, at_);
    const QString key = string();
    const QString member = path.isEmpty() ? key : path + u'.' + key;
    if (places_.contains(member)) repeated_.push_back({member, place});
    places_.insert(member, place);
    skipBlanks();
    ++at_;  // the colon
    value(member);
    skipBlanks();
    if (here() != ',') break;
    ++at_;
    skipBlanks();
  }
  ++at_;  // the closing brace
}

void JsonPlaces::array(const QString &path) {
  ++at_;
  skipBlanks();
  // Each entry has the name of its array with its index, so that objects in it cannot be taken for repeated.
  for (int index = 0; here() != ']' && at_ < document_.size(); ++index) {
    value(path + QStringLiteral("[%1]").arg(index));
    skipBlanks();
    if (here() == ',') ++at_;
    skipBlanks();
  }
  ++at_;
}

void JsonPlaces::skipBlanks() {
  while (at_ < document_.size() && QByteArrayView(" \t\r\n").contains(here())) ++at_;
}

QString JsonPlaces::string() {
  const qsizetype begin = at_++;
  while (at_ < document_.size() && here() != '"') at_ += here() == '\\' ? 2 : 1;
  ++at_;
  const QByteArray quoted = document_.mid(begin, at_ - begin);
  return QJsonDocument::fromJson('[' + quoted + ']').array().at(0).toString();
}

}  // namespace tavril::cli
