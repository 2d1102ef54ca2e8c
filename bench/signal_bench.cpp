// Getting, setting and resetting a signal: from outside through the host's record, and from a job through RtSignals.
#include <benchmark/benchmark.h>

#include "bench/bench_host.h"
#include "bench/floors.h"
#include "host/datalayer/data_layer.h"
#include "impl/rt_signals.h"

namespace motion::bench {
namespace {

using core::FctResult;
using kavo::rt_data::RtSignals;

const core::MotionSysIf2T& sys() {
  return BenchHost::instance().runtime().records().sys2;
}

void failIf(benchmark::State& state, bool isFailure) {
  if (isFailure) {
    state.SkipWithError("an operation failed");
  }
}

void sysGet(benchmark::State& state) {
  const core::MotionSysIf2T& record = sys();
  bool value = false;
  for (auto _ : state) {
    benchmark::DoNotOptimize(record.sync->getSignal(record.context, TOGGLED, value));
    benchmark::DoNotOptimize(value);
  }
  failIf(state, record.sync->getSignal(record.context, TOGGLED, value) != FctResult::Okay);
}

void sysSet(benchmark::State& state) {
  // Set twice in a row the counters go on to differ, but after 255 times they would meet, which is traced; a reset each time
  // would be measured too.
  const core::MotionSysIf2T& record = sys();
  FctResult result = record.sync->resetSignal(record.context, TOGGLED);
  unsigned int sinceReset = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(result = record.sync->setSignal(record.context, TOGGLED));
    if (++sinceReset == 250) {
      sinceReset = 0;
      record.sync->resetSignal(record.context, TOGGLED);
    }
  }
  failIf(state, result != FctResult::Okay);
}

void sysReset(benchmark::State& state) {
  const core::MotionSysIf2T& record = sys();
  FctResult result = FctResult::Okay;
  for (auto _ : state) {
    benchmark::DoNotOptimize(result = record.sync->resetSignal(record.context, TOGGLED));
  }
  failIf(state, result != FctResult::Okay);
}

/// The linked component's own signals; those of the bundle are others.
class LinkedSignals {
 public:
  LinkedSignals() : m_isReady(RtSignals::getInstance().initialize(m_dataLayer)) {}
  LinkedSignals(const LinkedSignals&) = delete;
  LinkedSignals& operator=(const LinkedSignals&) = delete;
  ~LinkedSignals() { RtSignals::getInstance().terminate(); }

  [[nodiscard]] bool isReady() const noexcept { return m_isReady; }

 private:
  host::datalayer::DataLayer m_dataLayer;
  bool m_isReady;
};

void rtGet(benchmark::State& state) {
  const LinkedSignals linked;
  RtSignals& signals = RtSignals::getInstance();
  bool value = false;
  bool isDone = linked.isReady();
  for (auto _ : state) {
    benchmark::DoNotOptimize(isDone = signals.get(TOGGLED, value, false));
    benchmark::DoNotOptimize(value);
  }
  failIf(state, !isDone);
}

void rtSet(benchmark::State& state) {
  const LinkedSignals linked;
  RtSignals& signals = RtSignals::getInstance();
  bool isDone = linked.isReady();
  unsigned int sinceReset = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(isDone = signals.set(TOGGLED));
    if (++sinceReset == 250) {
      sinceReset = 0;
      benchmark::DoNotOptimize(signals.reset(TOGGLED));
    }
  }
  failIf(state, !isDone);
}

void rtReset(benchmark::State& state) {
  const LinkedSignals linked;
  RtSignals& signals = RtSignals::getInstance();
  bool isDone = linked.isReady();
  for (auto _ : state) {
    benchmark::DoNotOptimize(isDone = signals.reset(TOGGLED));
  }
  failIf(state, !isDone);
}

template <std::unique_ptr<ISignalFloor> (*MAKE)()>
void floorGet(benchmark::State& state) {
  const auto floor = MAKE();
  for (auto _ : state) {
    benchmark::DoNotOptimize(floor->get(TOGGLED));
  }
}

template <std::unique_ptr<ISignalFloor> (*MAKE)()>
void floorSet(benchmark::State& state) {
  const auto floor = MAKE();
  for (auto _ : state) {
    floor->set(TOGGLED);
  }
}

template <std::unique_ptr<ISignalFloor> (*MAKE)()>
void floorReset(benchmark::State& state) {
  const auto floor = MAKE();
  for (auto _ : state) {
    floor->reset(TOGGLED);
  }
}

BENCHMARK(sysGet)->Name("sys_get");
BENCHMARK(sysSet)->Name("sys_set");
BENCHMARK(sysReset)->Name("sys_reset");
BENCHMARK(rtGet)->Name("rt_get");
BENCHMARK(rtSet)->Name("rt_set");
BENCHMARK(rtReset)->Name("rt_reset");
BENCHMARK(floorGet<makeSignalFloor>)->Name("floor_get");
BENCHMARK(floorSet<makeSignalFloor>)->Name("floor_set");
BENCHMARK(floorReset<makeSignalFloor>)->Name("floor_reset");
BENCHMARK(floorGet<makeLockedSignalFloor>)->Name("floor_locked_get");
BENCHMARK(floorSet<makeLockedSignalFloor>)->Name("floor_locked_set");
BENCHMARK(floorReset<makeLockedSignalFloor>)->Name("floor_locked_reset");

}  // namespace
}  // namespace motion::bench
