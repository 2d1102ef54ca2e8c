// Runs for a long time in real time: random valid programs on many objects, clients and aborts; nothing may go wrong, and
// nothing may grow.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <chrono>
#include <cstdint>
#include <exception>
#include <string>

#include "support/soak.h"

namespace {

using motion::test::SoakReport;

void print(const SoakReport& report) {
  const auto line = [](const char* what, auto count) { fmt::print("  {:<48} {:>14}\n", what, count); };
  line("cycles", report.cycles);
  line("  of which late", report.overruns);
  line("commands done", report.commandsDone);
  line("commands aborted", report.commandsAborted);
  line("moves", report.moves);
  line("options on them", report.options);
  line("joins, all members in one cycle", report.joins);
  line("signals handed over", report.signals);
  line("aborts of an object, then of its cell", report.aborts);
  line("reads of clients", report.clientReads);
  line("writes of clients", report.clientWrites);
  line("blocks held at the start", report.atStart.blocks);
  line("blocks held at the end", report.atEnd.blocks);
  line("bytes held at the start", report.atStart.bytes);
  line("bytes held at the end", report.atEnd.bytes);
}

}  // namespace

int main(int argumentCount, char** arguments) {
  motion::test::SoakConfig config;
  config.bundleDir = KAVO_BENCH_BUNDLE_DIR;
  double minutes = 10.0;
  CLI::App app{"Random programs, clients and aborts in real time, for a long time."};
  app.add_option("--minutes", minutes, "how long")->check(CLI::Range(0.01, 10'000.0));
  app.add_option("--cells", config.cells, "of five objects each")->check(CLI::Range(1U, motion::test::MAX_CELLS));
  app.add_option("--seed", config.seed, "of the random programs");
  CLI11_PARSE(app, argumentCount, arguments);
  config.duration = std::chrono::milliseconds(static_cast<std::int64_t>(minutes * 60e3));
  config.warmUp = std::chrono::seconds(10);
  SoakReport report;
  try {
    report = motion::test::runSoak(config);
  } catch (const std::exception& problem) {
    fmt::print(stderr, "kavo_soak: {}\n", problem.what());
    return 3;
  }
  fmt::print("\n  soak: {} objects, cycle 1 ms, {} min\n", config.cells * 5, minutes);
  if (!report.warning.empty()) {
    fmt::print("  warning: {}\n", report.warning);
  }
  print(report);
  for (const std::string& finding : report.findings) {
    fmt::print("  {}\n", finding);
  }
  fmt::print("\n{} errors, memory {}\n", report.errors, report.isSteady() ? "as at the start" : "NOT as at the start");
  return report.errors == 0 && report.isSteady() ? 0 : 1;
}
