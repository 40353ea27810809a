// What single parts take: the decoder and the builders, a layout pass and a tick of the screen, string tables
// and ports in growing numbers. "allocs" is how often one iteration asks for memory.
#include "bench/Allocations.h"
#include "bench/BenchLink.h"
#include "bench/BenchPorts.h"
#include "editor/EditorWindow.h"
#include "look/Style.h"
#include "platform/StringTableFile.h"
#include "serial/SerialPortManager.h"
#include "tests/support/Pty.h"

#include <QApplication>

#include <benchmark/benchmark.h>

#include <deque>
#include <functional>

namespace {

using namespace tavril;
using namespace tavril::bench;

void measure(benchmark::State &state, const std::function<void()> &once) {
  once();
  const long before = allocations();
  for ([[maybe_unused]] auto iteration : state) once();
  state.counters["allocs"] =
      benchmark::Counter(static_cast<double>(allocations() - before), benchmark::Counter::kAvgIterations);
}

// --------------------------------------------------------------------------------------- decoder and
// builders

void decodeReply(benchmark::State &state) {
  BenchLink link({});
  const QStringList frame{QStringLiteral("255"), QStringLiteral("7"), QStringLiteral("145"),
                          QStringLiteral("8"),   QStringLiteral("1"), QStringLiteral("144"),
                          QStringLiteral("254")};
  measure(state, [&] { link.state.FunctionCMD->returnErrorCode(frame); });
}

void takeDelivery(benchmark::State &state) {
  BenchLink link({});
  const QByteArray reply = QByteArray::fromHex("ff0791080190fe");
  measure(state, [&] { link.application->didReceiveData(nullptr, reply); });
}

void buildRead(benchmark::State &state) {
  BenchLink link({});
  measure(state, [&] { link.state.FunctionCMD->ReadServoSettingValue(8); });
}

void buildWrite(benchmark::State &state) {
  BenchLink link({});
  measure(state, [&] { link.state.FunctionCMD->WriteServoSettingValue(8, 400); });
}

// ------------------------------------------------------------------------------------------------- the
// screen

struct BenchScreen {
  BenchScreen() { window.show(); }
  BenchLink link{{}};
  EditorWindow window{link.state, *link.application, link.objects.desktop, EditorWindow::Actions()};
};

void layoutPass(benchmark::State &state) {
  BenchScreen screen;
  measure(state, [&] { screen.window.controller().viewWillLayout(); });
}

void idleTick(benchmark::State &state) {
  BenchScreen screen;
  measure(state, [&] { screen.window.controller().update(); });
}

// -----------------------------------------------------------------------------------------------------
// growth

void parseStringTable(benchmark::State &state) {
  QByteArray table;
  for (long i = 0; i < state.range(0); ++i) {
    table += "\"key_" + QByteArray::number(static_cast<qlonglong>(i)) + "\"=\"a text\";\n";
  }
  for ([[maybe_unused]] auto iteration : state) {
    const StringTableFile parsed = StringTableFile::parse(table);
    if (parsed.entries().size() != state.range(0)) state.SkipWithError("entries are missing");
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void listPorts(benchmark::State &state) {
  std::deque<Pty> terminals;
  BenchPorts bench;
  for (long i = 0; i < state.range(0); ++i) {
    bench.devices.add(QStringLiteral("usbserial-tty%1").arg(i), terminals.emplace_back().path());
  }
  for ([[maybe_unused]] auto iteration : state) {
    {
      const auto manager = SerialPortManager::sharedSerialPortManager(bench.serial.environment);
      if (static_cast<long>(manager->countOfAvailablePorts()) != state.range(0)) {
        state.SkipWithError("ports are missing");
      }
    }
    state.PauseTiming();
    bench.allSerialPortsInfo.clear();
    state.ResumeTiming();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

void openAndClosePorts(benchmark::State &state) {
  std::deque<Pty> terminals;
  BenchPorts bench;
  std::vector<std::shared_ptr<SerialPort>> ports;
  for (long i = 0; i < state.range(0); ++i) {
    ports.push_back(bench.port(QStringLiteral("usbserial-tty%1").arg(i), terminals.emplace_back().path()));
  }
  for ([[maybe_unused]] auto iteration : state) {
    for (const auto &port : ports) {
      if (!port->open()) state.SkipWithError("a port cannot be opened");
    }
    for (const auto &port : ports) port->close();
  }
  state.SetItemsProcessed(state.iterations() * state.range(0));
}

BENCHMARK(decodeReply);
BENCHMARK(takeDelivery);
BENCHMARK(buildRead);
BENCHMARK(buildWrite);
BENCHMARK(layoutPass)->Unit(benchmark::kMicrosecond);
BENCHMARK(idleTick);
BENCHMARK(parseStringTable)
    ->RangeMultiplier(10)
    ->Range(100, 10'000)
    ->Arg(100'000)
    ->Unit(benchmark::kMicrosecond);
BENCHMARK(listPorts)->Arg(1)->Arg(8)->Arg(64)->Unit(benchmark::kMicrosecond);
BENCHMARK(openAndClosePorts)->Arg(1)->Arg(8)->Arg(64)->UseRealTime()->Unit(benchmark::kMillisecond);

}  // namespace

int main(int argc, char **argv) {
  qputenv("QT_QPA_PLATFORM", "offscreen");
  QApplication application(argc, argv);
  Style::apply(application);
  benchmark::Initialize(&argc, argv);
  benchmark::RunSpecifiedBenchmarks();
  return 0;
}
