// Whole cycles of waiting axes in the host, from one axis to ten thousand.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/bench_host.h"
#include "bench/floors.h"
#include "host/motion/cycle.h"

namespace motion::bench {
namespace {

void cycle(benchmark::State& state) {
  host::Cycle sut(BenchHost::instance().waitingAxes(static_cast<std::size_t>(state.range(0))));
  for (auto _ : state) {
    sut.run();
  }
}

/// As many signals as there are axes, each an object of its own in memory and reached by a virtual call.
void floorCycle(benchmark::State& state) {
  std::vector<std::unique_ptr<ISignalFloor>> signals;
  for (std::int64_t i = 0; i < state.range(0); ++i) {
    signals.push_back(makeSignalFloor());
  }
  for (auto _ : state) {
    for (const auto& signal : signals) {
      benchmark::DoNotOptimize(signal->get(NEVER_SET));
    }
  }
}

/// Virtual time as a simulation spends it: preparation, then the cycle.
void step(benchmark::State& state) {
  host::Runtime& runtime = BenchHost::instance().runtime();
  for (auto _ : state) {
    runtime.step();
  }
}

BENCHMARK(cycle)->Name("cycle")->Arg(1)->Arg(100)->Arg(1'000)->Arg(10'000);
BENCHMARK(floorCycle)->Name("floor_cycle")->Arg(1)->Arg(100)->Arg(1'000)->Arg(10'000);
BENCHMARK(step)->Name("step");

}  // namespace
}  // namespace motion::bench
