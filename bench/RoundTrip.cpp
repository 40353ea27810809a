// 50 bytes out and 7 back over a pseudo-terminal, in the ways there are. One iteration is one trip; the
// processor time is that of this process, without the one that answers.
#include "bench/Answering.h"
#include "bench/Contender.h"

#include <QCoreApplication>

#include <benchmark/benchmark.h>

#include <functional>
#include <utility>

namespace {

using namespace tavril::bench;
using Maker = std::unique_ptr<Contender> (*)(const QString &path);

constexpr int tripsAtOnce = 500;

void measure(benchmark::State &state, const QString &path, Maker maker) {
  const auto contender = maker(path);
  contender->run(50);  // all that is made once
  while (state.KeepRunningBatch(tripsAtOnce)) contender->run(tripsAtOnce);
}

}  // namespace

int main(int argc, char **argv) {
  const std::pair<const char *, Maker> makers[]{{"bare loop", bareLoop},
                                                {"bare loop on two threads", bareHop},
                                                {"SerialPort", throughSerialPort},
                                                {"QtSerialPort", throughQtSerialPort},
                                                {"Boost.Asio", throughAsio}};
  const Answering answering[std::size(makers)];
  const QCoreApplication application(argc, argv);
  for (std::size_t i = 0; i < std::size(makers); ++i) {
    const auto &[name, maker] = makers[i];
    benchmark::RegisterBenchmark(name, measure, answering[i].path(), maker)
        ->UseRealTime()
        ->MeasureProcessCPUTime();
  }
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
