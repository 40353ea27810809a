#pragma once

#include <QByteArrayView>
#include <QHash>
#include <QString>

#include <vector>

namespace tavril {

/// The content of a string table: lines of "key"="value"; in UTF-8, with // and /* */ comments. Known escapes
/// are \" \\ \n \t \r and \Uxxxx (one UTF-16 unit). Any other line is reported and left out.
class StringTableFile {
 public:
  static constexpr qsizetype largestSize = 4 * 1024 * 1024;
  static constexpr std::size_t mostProblems = 100;

  struct Problem {
    int line = 0;
    QString what;
  };

  /// Takes any bytes. No more than mostProblems problems are reported.
  static StringTableFile parse(QByteArrayView text);

  const QHash<QString, QString> &entries() const { return entries_; }
  const std::vector<Problem> &problems() const { return problems_; }

 private:
  class LineScanner;

  void parseLine(QByteArrayView bytes);
  void add(const QString &key, const QString &value);
  void report(int line, const QString &what);

  QHash<QString, QString> entries_;
  std::vector<Problem> problems_;
  int line_ = 0;
  int commentBegin_ = 0;  ///< line where the comment began that is still open, or 0
};

}  // namespace tavril
