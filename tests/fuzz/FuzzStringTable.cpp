#include "platform/StringTableFile.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"

#include <algorithm>

// Any bytes as a string table: the texts that come out are texts, and a table that is written from them reads
// back the same.

namespace tavril {
namespace {

QString quoted(const QString &text) {
  QString result = QStringLiteral("\"");
  for (const QChar character : text) {
    if (character == u'"' || character == u'\\') {
      result += u'\\';
      result += character;
    } else if (character < u' ') {
      result += QStringLiteral("\\U%1").arg(static_cast<int>(character.unicode()), 4, 16, QLatin1Char('0'));
    } else {
      result += character;
    }
  }
  return result + u'"';
}

void checkTexts(const StringTableFile &table, int lines) {
  mustHold(table.problems().size() <= StringTableFile::mostProblems, "the problems are limited");
  for (const StringTableFile::Problem &problem : table.problems()) {
    mustHold(problem.line >= 1 && problem.line <= std::max(lines, 1), "a problem is on a line of the table");
    mustHold(!problem.what.isEmpty(), "a problem has words");
  }
  for (auto entry = table.entries().cbegin(); entry != table.entries().cend(); ++entry) {
    mustHold(!entry.key().isEmpty(), "no key is empty");
    for (const QString &text : {entry.key(), entry.value()}) {
      mustHold(text.isValidUtf16(), "a text is whole characters");
      mustHold(!text.contains(QChar(0)), "a text has no zero in it");
    }
  }
}

void writeAndReadAgain(const StringTableFile &table) {
  QString text;
  for (auto entry = table.entries().cbegin(); entry != table.entries().cend(); ++entry) {
    text += quoted(entry.key()) + u'=' + quoted(entry.value()) + QStringLiteral(";\n");
  }
  const QByteArray bytes = text.toUtf8();
  if (bytes.size() > StringTableFile::largestSize) return;
  const StringTableFile again = StringTableFile::parse(bytes);
  mustHold(again.problems().empty(), "a table that was written has no problems");
  mustHold(again.entries() == table.entries(), "a table that was written reads back the same");
}

}  // namespace
}  // namespace tavril

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  const QByteArrayView bytes(data, static_cast<qsizetype>(size));
  const StringTableFile table = StringTableFile::parse(bytes);
  checkTexts(table, static_cast<int>(std::count(bytes.begin(), bytes.end(), '\n')) + 1);
  writeAndReadAgain(table);
  return 0;
}
