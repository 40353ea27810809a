#pragma once

#include <QByteArray>
#include <QString>
#include <QStringView>
#include <QXmlStreamReader>

namespace tavril {

/// Reads XML of a fixed, shallow form from untrusted bytes. Everything else is an error: other elements,
/// text, and document types, because they could declare entities that expand without end. After an error all
/// calls return false.
class StrictXml {
 public:
  explicit StrictXml(const QByteArray &bytes) : reader_(bytes) {}

  /// Goes to the root, or to the next child element, which must have this name. False at the end of the
  /// parent.
  bool nextElement(QStringView name);
  /// Goes to the end of an element that must have no content, or of the document.
  bool endElement();
  bool endDocument();

  /// The current element's attribute. It is an error if there is none with this name.
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
