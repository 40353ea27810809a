#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <QXmlStreamReader>

namespace tavril {

/// Reads XML of a fixed, shallow form from bytes that anybody may have written. Whatever the form does not
/// have is an error where it begins: other elements, text, and document types, which could declare entities
/// that expand without end. After an error all calls return false.
class StrictXml {
 public:
  explicit StrictXml(const QByteArray &bytes) : reader_(bytes) {}

  /// Goes to the root or to the next child element, which must have this name. False at the parent's end.
  bool nextElement(QStringView name);
  /// Goes to the end of an element that must have no content, or of the document.
  bool endElement();
  bool endDocument();

  /// The current element's attribute; it is an error when it has none of this name.
  QString attribute(QStringView name);
  void fail(const QString &problem);

  bool failed() const { return reader_.hasError(); }
  /// What is wrong, with its line.
  QString problem() const;

 private:
  QXmlStreamReader::TokenType nextTag();

  QXmlStreamReader reader_;
};

}  // namespace tavril
