// What clients do to a real-time run: the time of its cycles without and with clients at its signals, and whether a write
// was lost or a value torn.
#include "support/signal_load.h"

#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>

namespace {

using motion::test::CycleFigures;
using motion::test::SignalLoadReport;

void printRow(const char* what, double without, double with) {
  fmt::print("  {:<24} {:>16.2f} {:>16.2f}\n", what, without, with);
}

void printCycles(const CycleFigures& without, const CycleFigures& with) {
  fmt::print("\n  {:<24} {:>16} {:>16}\n", "objects' time in a cycle", "without clients", "with clients");
  printRow("min [us]", without.min, with.min);
  printRow("median [us]", without.median, with.median);
  printRow("99 % [us]", without.percent99, with.percent99);
  printRow("99.9 % [us]", without.permille999, with.permille999);
  printRow("max [us]", without.max, with.max);
  fmt::print("  {:<24} {:>16} {:>16}\n", "cycles", without.cycles, with.cycles);
  fmt::print("  {:<24} {:>16} {:>16}\n", "of which late", without.overruns, with.overruns);
}

void printCounts(const SignalLoadReport& report) {
  const auto print = [](const char* what, std::uint64_t count) { fmt::print("  {:<62} {:>12}\n", what, count); };
  fmt::print("\n");
  print("reads of clients", report.clients.reads);
  print("  of which it was known what they had to give", report.clients.checkedReads);
  print("writes of clients", report.clients.writes);
  print("  of which the counter was known that they had to make", report.clients.checkedWrites);
  print("commands done", report.commandsDone);
  print("counters moved by jobs, each one looked at", report.jobChanges);
  print("looks at the bare counters of clients", report.outsideLooks);
  print("looks at the bare counters of jobs", report.jobLooks);
  print("turns that clients and jobs took with one signal", report.clients.turns);
  print("sets that stepped over the other side's counter", report.collisions);
  print("refused", report.refused);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  motion::test::SignalLoadConfig config;
  config.bundleDir = KAVO_BENCH_BUNDLE_DIR;
  double seconds = 10.0;
  std::uint32_t cycle = 1'000;
  CLI::App app{"Clients read and write random signals against a real-time run whose jobs do the same."};
  app.add_option("--seconds", seconds, "how long, half of it without clients")->check(CLI::Range(0.1, 3'600.0));
  app.add_option("--clients", config.clients, "of the data layer; one more calls the system functions")
      ->check(CLI::Range(1U, motion::test::MAX_WRITERS - 1));
  app.add_option("--cycle-us", cycle, "time of a cycle")->check(CLI::Range(50U, 1'000'000U));
  CLI11_PARSE(app, argumentCount, arguments);
  config.duration = std::chrono::milliseconds(static_cast<std::int64_t>(seconds * 1e3));
  config.cycle = std::chrono::microseconds(cycle);
  SignalLoadReport report;
  try {
    report = motion::test::runSignalLoad(config);
  } catch (const std::exception& problem) {
    fmt::print(stderr, "kavo_signal_load: {}\n", problem.what());
    return 3;
  }
  fmt::print("\n  signals under load: {} clients of the data layer, a caller of the system functions, cycle {} us\n",
             config.clients, cycle);
  if (!report.warning.empty()) {
    fmt::print("  warning: {}\n", report.warning);
  }
  printCycles(report.withoutClients, report.withClients);
  printCounts(report);
  for (const std::string& finding : report.findings) {
    fmt::print("  {}\n", finding);
  }
  fmt::print("\n{} lost, {} torn\n", report.lost, report.torn);
  return report.isFine() ? 0 : 1;
}
