// Runs the benchmarks and prints each figure beside its floor. Takes the options of Google Benchmark.
#include <benchmark/benchmark.h>

#include <vector>

#include "bench/bench_host.h"
#include "bench/results.h"

int main(int argumentCount, char** arguments) {
  // Many short repetitions in mixed order, so that whatever else the machine does hits figures and floors alike.
  char repetitions[] = "--benchmark_repetitions=15";
  char time[] = "--benchmark_min_time=0.02";
  char order[] = "--benchmark_enable_random_interleaving=true";
  char aggregates[] = "--benchmark_report_aggregates_only=true";
  std::vector<char*> all{arguments[0], repetitions, time, order, aggregates};
  all.insert(all.end(), arguments + 1, arguments + argumentCount);
  int count = static_cast<int>(all.size());
  benchmark::Initialize(&count, all.data());
  if (benchmark::ReportUnrecognizedArguments(count, all.data())) {
    return 2;
  }
  motion::bench::Results results;
  benchmark::RunSpecifiedBenchmarks(&results);
  motion::bench::BenchHost::close();
  results.print();
  return results.isComplete() ? 0 : 1;
}
