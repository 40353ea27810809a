// Makes a string table out of two files as the converter's window does, without the window:
//   pair-lines KEYS VALUES TABLE
// Prints how long the pairing took and how long all did from reading to writing, in nanoseconds of processor
// time.
#include "platform/linux/PosixUserFiles.h"
#include "tools/LinePairing.h"
#include "tools/TextFile.h"

#include <QFile>

#include <cstdio>
#include <time.h>

namespace {

using namespace tavril;

/// The processor time of this process, which other programs on the machine hardly change, in nanoseconds.
long long now() {
  timespec time{};
  ::clock_gettime(CLOCK_PROCESS_CPUTIME_ID, &time);
  return time.tv_sec * 1'000'000'000LL + time.tv_nsec;
}

QStringList linesOf(PosixUserFiles &files, const QString &path, bool &good) {
  const TextFile file = TextFile::read(files, path);
  if (file.text) return file.text->split(u'\n');
  std::fprintf(stderr, "pair-lines: %s\n", qUtf8Printable(file.problem));
  good = false;
  return {};
}

}  // namespace

int main(int argc, char **argv) {
  if (argc != 4) {
    std::fputs("usage: pair-lines KEYS VALUES TABLE\n", stderr);
    return 2;
  }
  PosixUserFiles files;
  const QString table = QFile::decodeName(argv[3]);
  bool good = true;
  const auto begin = now();
  const QStringList keys = linesOf(files, QFile::decodeName(argv[1]), good);
  const QStringList values = linesOf(files, QFile::decodeName(argv[2]), good);
  const auto beginPairing = now();
  const LinePairing pairing = LinePairing::of(keys, values);
  const auto endPairing = now();
  if (!good || pairing.missing || files.createEmpty(table) || files.write(table, pairing.table.toUtf8())) {
    std::fputs("pair-lines: there is no table\n", stderr);
    return 1;
  }
  std::printf("%lld %lld\n", endPairing - beginPairing, now() - begin);
  return 0;
}
