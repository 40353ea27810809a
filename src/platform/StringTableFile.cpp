#include "platform/StringTableFile.h"

#include <QChar>
#include <QStringConverter>
#include <QStringDecoder>
#include <QStringView>

namespace tavril {

/// Walks over one line; a failed step leaves its reason behind.
class StringTableFile::LineScanner {
 public:
  LineScanner(QStringView line, bool inComment) : line_(line), inComment_(inComment) {}

  bool inComment() const { return inComment_; }
  const QString &reason() const { return reason_; }

  /// Skips white space and comments; true when there is something left.
  bool skipToNext() {
    while (position_ < line_.size()) {
      const QStringView left = line_.sliced(position_);
      if (inComment_) {
        const qsizetype end = left.indexOf(u"*/");
        if (end < 0) return false;
        inComment_ = false;
        position_ += end + 2;
      } else if (left.startsWith(u"/*")) {
        inComment_ = true;
        position_ += 2;
      } else if (left.startsWith(u"//")) {
        return false;
      } else if (left.front().isSpace()) {
        ++position_;
      } else {
        return true;
      }
    }
    return false;
  }

  bool take(QChar character) {
    if (!skipToNext() || line_[position_] != character) {
      return fail(QStringLiteral("'%1' is missing").arg(character));
    }
    ++position_;
    return true;
  }

  bool takeText(QString &text) {
    text.clear();
    if (!take(u'"')) return false;
    while (position_ < line_.size()) {
      const QChar character = line_[position_++];
      if (character == u'"') {
        return text.isValidUtf16() || fail(QStringLiteral("\\U gives only half of a character"));
      }
      if (character == u'\\') {
        if (!takeEscape(text)) return false;
      } else if (character == u'\r') {
        // A table that was put together from files with CRLF line ends has one at the end of each text.
      } else if (character < u' ' && character != u'\t') {
        return fail(QStringLiteral("the text contains a control character"));
      } else {
        text += character;
      }
    }
    return fail(QStringLiteral("the text does not end on its line"));
  }

 private:
  bool fail(const QString &reason) {
    reason_ = reason;
    return false;
  }

  bool takeEscape(QString &text) {
    const QChar kind = position_ < line_.size() ? line_[position_++] : QChar();
    switch (kind.unicode()) {
      case u'"':
      case u'\\':
        text += kind;
        return true;
      case u'n':
        text += u'\n';
        return true;
      case u't':
        text += u'\t';
        return true;
      case u'r':
        text += u'\r';
        return true;
      case u'U':
        return takeUnit(text);
      default:
        return fail(QStringLiteral("the escape after a backslash is not known"));
    }
  }

  bool takeUnit(QString &text) {
    char16_t unit = 0;
    for (int digit = 0; digit < 4; ++digit) {
      const char16_t character = position_ < line_.size() ? line_[position_++].unicode() : u'\0';
      const int value = hexadecimalValue(character);
      if (value < 0) return fail(QStringLiteral("\\U needs four hexadecimal digits"));
      unit = static_cast<char16_t>(unit * 16 + value);
    }
    if (unit == 0) return fail(QStringLiteral("\\U0000 is not a character"));
    text += QChar(unit);
    return true;
  }

  static int hexadecimalValue(char16_t character) {
    if (character >= u'0' && character <= u'9') return character - u'0';
    if (character >= u'a' && character <= u'f') return character - u'a' + 10;
    if (character >= u'A' && character <= u'F') return character - u'A' + 10;
    return -1;
  }

  QStringView line_;
  qsizetype position_ = 0;
  bool inComment_;
  QString reason_;
};

StringTableFile StringTableFile::parse(QByteArrayView text) {
  StringTableFile file;
  if (text.size() > largestSize) {
    file.report(1, QStringLiteral("the table is larger than 4 MiB"));
    return file;
  }
  if (text.startsWith("\xff\xfe") || text.startsWith("\xfe\xff")) {
    file.report(1, QStringLiteral("the table is UTF-16, not UTF-8"));
    return file;
  }
  if (text.startsWith("\xef\xbb\xbf")) text = text.sliced(3);

  while (!text.isEmpty()) {
    const qsizetype newline = text.indexOf('\n');
    const qsizetype end = newline < 0 ? text.size() : newline;
    ++file.line_;
    file.parseLine(text.first(end));
    text = text.sliced(newline < 0 ? end : end + 1);
  }
  if (file.commentBegin_ > 0) {
    file.report(file.commentBegin_, QStringLiteral("the comment that begins here does not end"));
  }
  return file;
}

void StringTableFile::parseLine(QByteArrayView bytes) {
  QStringDecoder decode(QStringDecoder::Utf8, QStringConverter::Flag::Stateless);
  const QString line = decode(bytes);
  LineScanner scanner(line, commentBegin_ > 0);
  if (decode.hasError()) {
    report(line_, QStringLiteral("the line is not valid UTF-8"));
    // A comment that opens or closes on such a line still does.
    if (scanner.inComment()) scanner.skipToNext();
  } else {
    QString key;
    QString value;
    while (scanner.skipToNext()) {
      const bool whole =
          scanner.takeText(key) && scanner.take(u'=') && scanner.takeText(value) && scanner.take(u';');
      if (!whole) {
        report(line_, scanner.reason());
        break;
      }
      add(key, value);
    }
  }
  if (!scanner.inComment()) {
    commentBegin_ = 0;
  } else if (commentBegin_ == 0) {
    commentBegin_ = line_;
  }
}

void StringTableFile::add(const QString &key, const QString &value) {
  if (key.isEmpty()) {
    // Two lists of texts that both end in a newline give one pair of empty texts when they are merged.
    if (!value.isEmpty()) report(line_, QStringLiteral("the key is empty"));
    return;
  }
  if (entries_.contains(key)) report(line_, QStringLiteral("\"%1\" stands here again").arg(key));
  entries_.insert(key, value);
}

void StringTableFile::report(int line, const QString &what) {
  if (problems_.size() < mostProblems) problems_.push_back({line, what});
}

}  // namespace tavril
