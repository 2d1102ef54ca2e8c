// A trace that is switched off, and one into the buffered sink.
#include <benchmark/benchmark.h>

#include <time.h>

#include "bench/floors.h"
#include "bench/local_journal.h"
#include "impl/debug_trace.h"

namespace motion::bench {
namespace {

// As long as the texts that the component traces.
#define BENCH_TEXT "Signal(%u) might be set by both the system function SetSignal as well as the command SetSignal"

void traceDisabled(benchmark::State& state) {
  kavo::DebugTrace::setTraceEnablingState({false, false, false});
  unsigned int value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(++value);
    KAVO_TRACE(Info, BENCH_TEXT, value);
  }
  kavo::DebugTrace::setTraceEnablingState({});
}

void floorTraceDisabled(benchmark::State& state) {
  unsigned int value = 0;
  for (auto _ : state) {
    benchmark::DoNotOptimize(++value);
    traceFloor(BENCH_TEXT, value);
  }
}

/// Time of the processor that this thread has used [s].
double threadTime() {
  timespec time{};
  clock_gettime(CLOCK_THREAD_CPUTIME_ID, &time);
  return static_cast<double>(time.tv_sec) + static_cast<double>(time.tv_nsec) * 1e-9;
}

/// Times as many entries as the journal takes at once; emptying it is not measured.
template <typename WRITE>
void writeEntries(benchmark::State& state, WRITE write) {
  LocalJournal journal;
  for (auto _ : state) {
    const double begin = threadTime();
    for (unsigned int i = 0; i < LocalJournal::CAPACITY; ++i) {
      write(journal.socket(), i);
    }
    state.SetIterationTime((threadTime() - begin) / LocalJournal::CAPACITY);
    if (journal.drain() != LocalJournal::CAPACITY) {
      state.SkipWithError("not one message for each entry");
      return;
    }
  }
}

void traceBuffered(benchmark::State& state) {
  writeEntries(state, [](int /*socket*/, unsigned int value) { KAVO_TRACE(Info, BENCH_TEXT, value); });
}

void floorTraceBuffered(benchmark::State& state) {
  writeEntries(state, [](int socket, unsigned int value) { entryFloor(socket, BENCH_TEXT, value); });
}

BENCHMARK(traceDisabled)->Name("trace_disabled");
BENCHMARK(floorTraceDisabled)->Name("floor_trace_disabled");
BENCHMARK(traceBuffered)->Name("trace_buffered")->UseManualTime();
BENCHMARK(floorTraceBuffered)->Name("floor_trace_buffered")->UseManualTime();

}  // namespace
}  // namespace motion::bench
