#include "platform/StringTableFile.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"
#include "tools/LinePairing.h"
#include "tools/TextFile.h"

// Any bytes as a file of keys and, behind the first zero, one of values: each key and its value stand on a
// line, in order and as they were, or it is said which key has no value; and whatever the table has become,
// it can be opened as one.

namespace tavril {
namespace {

void checkTable(const QStringList &keys, const QStringList &values, const QString &table) {
  qsizetype at = 0;
  for (qsizetype i = 0; i < keys.size(); ++i) {
    const QString line = u'"' + keys[i] + QStringLiteral("\"=\"") + values[i] + QStringLiteral("\";\n");
    mustHold(QStringView(table).mid(at, line.size()) == line, "a pair is a line of the table");
    at += line.size();
  }
  mustHold(at == table.size(), "and there is nothing else");
  const StringTableFile read = StringTableFile::parse(table.toUtf8());
  mustHold(read.entries().size() <= keys.size() || table.contains(u'\\') || table.contains(u'"'),
           "plain pairs become no more entries than there are keys");
}

}  // namespace
}  // namespace tavril

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  const QByteArray bytes = FuzzInput(data, size).rest();
  const qsizetype middle = bytes.indexOf('\0');
  const auto keyText = TextFile::decode(middle < 0 ? bytes : bytes.first(middle));
  const auto valueText = TextFile::decode(middle < 0 ? QByteArray() : bytes.sliced(middle + 1));
  if (!keyText || !valueText) return 0;
  mustHold(keyText->isValidUtf16() && valueText->isValidUtf16(), "what was decoded is whole characters");
  const QStringList keys = keyText->split(u'\n');
  const QStringList values = valueText->split(u'\n');
  const LinePairing pairing = LinePairing::of(keys, values);
  mustHold(pairing.missing.has_value() == (values.size() < keys.size()),
           "a table needs a value for each key");
  if (pairing.missing) {
    mustHold(*pairing.missing == values.size(), "the first key without a value is named");
    mustHold(pairing.table.isEmpty(), "and there is no table");
  } else {
    checkTable(keys, values, pairing.table);
  }
  return 0;
}
