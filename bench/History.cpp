// What the history of settings takes when it is long: opening it, looking for what is new, appending. The
// figure behind each name is how many entries it has.
#include "records/HistoryFile.h"

#include <benchmark/benchmark.h>

#include <cstddef>
#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <string>

namespace {

using namespace tavril::records;

EntryLine entry(LineNumber number) {
  return {number,
          std::chrono::sys_seconds(std::chrono::seconds(1'772'600'767 + number)),
          Reason::BeforePlan,
          "usbserial-A10KX3M2",
          "tavril 0.9.1",
          {1, 2, 0, 1, 70, 90, 140, 400, static_cast<int>(number % 1000), 0, 120, 100, 100, 100, -3}};
}

/// A file of so many entries, in a folder that goes with it.
class LongHistory {
 public:
  explicit LongHistory(long count) {
    std::string name = (std::filesystem::temp_directory_path() / "tavril-bench-XXXXXX").string();
    if (::mkdtemp(name.data()) == nullptr) std::abort();
    folder_ = name;
    std::ofstream file(path());
    for (long number = 1; number <= count; ++number) file << textOf(entry(number)) << '\n';
  }
  ~LongHistory() { std::filesystem::remove_all(folder_); }
  LongHistory(const LongHistory &) = delete;
  LongHistory &operator=(const LongHistory &) = delete;

  std::string path() const { return folder_ / "history.jsonl"; }

 private:
  std::filesystem::path folder_;
};

bool has(const HistoryFile &file, long count) {
  return file.book().entries().size() == static_cast<std::size_t>(count) && file.book().remarks().empty();
}

void openHistory(benchmark::State &state) {
  const LongHistory history(state.range(0));
  for ([[maybe_unused]] auto iteration : state) {
    HistoryFile file(history.path());
    if (file.refresh().happened() || !has(file, state.range(0))) state.SkipWithError("entries are missing");
  }
}

void refreshHistory(benchmark::State &state) {
  const LongHistory history(state.range(0));
  HistoryFile file(history.path());
  for ([[maybe_unused]] auto iteration : state) {
    if (file.refresh().happened() || !has(file, state.range(0))) state.SkipWithError("entries are missing");
  }
}

void appendToHistory(benchmark::State &state) {
  const LongHistory history(state.range(0));
  HistoryFile file(history.path());
  for ([[maybe_unused]] auto iteration : state) {
    if (file.append(entry(0)).error.happened()) state.SkipWithError("an entry was not kept");
  }
}

void recogniseServo(benchmark::State &state) {
  const LongHistory history(state.range(0));
  HistoryFile file(history.path());
  file.append(NameLine{0, {}, "left hip", {1, state.range(0)}});
  const RawSettings settings = file.book().newest()->settings;
  for ([[maybe_unused]] auto iteration : state) {
    if (file.book().looksLike(settings).names.size() != 1) state.SkipWithError("nobody was recognised");
  }
}

BENCHMARK(openHistory)->Arg(100)->Arg(1000)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(refreshHistory)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(appendToHistory)->Arg(10000)->Unit(benchmark::kMillisecond);
BENCHMARK(recogniseServo)->Arg(10000)->Unit(benchmark::kMillisecond);

}  // namespace

BENCHMARK_MAIN();
