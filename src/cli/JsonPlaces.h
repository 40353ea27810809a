#pragma once

#include <QByteArray>
#include <QHash>
#include <QString>

#include <vector>

namespace tavril::cli {

/// Where something stands in a text, both counted from 1.
struct TextPlace {
  int line = 1;
  int column = 1;  ///< in characters
};

/// The place of a byte of the text.
TextPlace placeOf(const QByteArray &text, qsizetype offset);

/// Where the members of a JSON document stand, which Qt's parser does not tell; nor does it tell of members
/// that are there twice. The document must have been found to be well-formed before.
class JsonPlaces {
 public:
  struct Member {
    QString path;  ///< "settings.kp.value"; the members of arrays have no entry of their own
    TextPlace place;
  };

  explicit JsonPlaces(const QByteArray &document);

  /// The place of the member's key; the document's beginning for a path that is not there.
  TextPlace of(const QString &path) const { return places_.value(path); }
  /// Members whose path was there before, at their second place.
  const std::vector<Member> &repeated() const { return repeated_; }

 private:
  void value(const QString &path);
  void object(const QString &path);
  void array(const QString &path);
  void skipBlanks();
  /// Leaves the position behind the string.
  QString string();
  char here() const { return at_ < document_.size() ? document_[at_] : '\0'; }

  const QByteArray document_;
  qsizetype at_ = 0;
  QHash<QString, TextPlace> places_;
  std::vector<Member> repeated_;
};

}  // namespace tavril::cli
