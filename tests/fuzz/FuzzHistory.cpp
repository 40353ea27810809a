#include "records/Crc32.h"
#include "records/HistoryBook.h"
#include "tests/fuzz/FuzzInput.h"
#include "tests/fuzz/FuzzTarget.h"
#include "tests/fuzz/Invariant.h"

#include <algorithm>
#include <array>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <string>
#include <string_view>
#include <variant>

// Any bytes as the history, as they are or, if the first is '#', with the right checksum at the end of each
// line: every line is kept or remarked, in pieces as at once; what is kept can be written and read back; and
// a new line follows, whatever the file has become.

namespace tavril::records {
namespace {

std::string sealed(std::string_view lines) {
  std::string all;
  while (!lines.empty()) {
    const std::string line(lines.substr(0, lines.find('\n')));
    std::array<char, 9> digits{};
    std::snprintf(digits.data(), digits.size(), "%08x", static_cast<unsigned>(crc32(line)));
    all += line + ",\"crc\":\"" + digits.data() + "\"}\n";
    lines.remove_prefix(std::min(line.size() + 1, lines.size()));
  }
  return all;
}

void mustReadBackTheSame(const HistoryLine &line) {
  mustHold(lineFrom(textOf(line)).line == line, "what was kept can be written and reads back the same");
}

void checkLines(const HistoryBook &book) {
  LineNumber number = 0;
  for (const EntryLine &entry : book.entries()) {
    mustHold(entry.number > number, "the numbers of entries grow");
    number = entry.number;
    mustHold(book.find(number) == &entry, "an entry is found by its number");
    mustReadBackTheSame(entry);
  }
  for (const PlanRecord &plan : book.plans()) {
    mustReadBackTheSame(plan.begin);
    if (plan.end) mustReadBackTheSame(*plan.end);
  }
  mustHold(book.nextNumber() > number, "the next number is a new one");
  if (const EntryLine *newest = book.newest()) (void)book.looksLike(newest->settings);
}

void mustBeAlike(const HistoryBook &one, const HistoryBook &other) {
  mustHold(one.entries() == other.entries() && one.remarks() == other.remarks() &&
               one.plans().size() == other.plans().size() && one.nextNumber() == other.nextNumber(),
           "reading in pieces gives the same");
}

}  // namespace
}  // namespace tavril::records

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
  using namespace tavril;
  using namespace tavril::records;
  std::string bytes = FuzzInput(data, size).rest().toStdString();
  if (bytes.starts_with('#')) bytes = sealed(std::string_view(bytes).substr(1));

  HistoryBook book;
  const std::size_t taken = book.take(bytes);
  mustHold(taken == bytes.rfind('\n') + 1, "all whole lines are taken");
  mustHold(book.endsTorn() == (taken < bytes.size()), "the rest is torn");
  checkLines(book);

  HistoryBook inPieces;
  const std::size_t half = inPieces.take(std::string_view(bytes).substr(0, bytes.size() / 2));
  inPieces.take(std::string_view(bytes).substr(half));
  mustBeAlike(book, inPieces);

  EntryLine added;
  added.number = book.nextNumber();
  const std::string text = textOf(added);
  if (!lineFrom(text).line) return 0;  // the numbers are used up
  const std::string next = (book.endsTorn() ? "\n" : "") + text + '\n';
  book.take(bytes.substr(taken) + next);
  mustHold(book.newest() != nullptr && *book.newest() == added, "an appended entry is the newest");
  return 0;
}
