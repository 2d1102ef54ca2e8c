// kavo-conformance: looks at a bundle from outside, check by check.
#include <fmt/format.h>

#include <CLI/CLI.hpp>
#include <cstdio>
#include <exception>
#include <filesystem>
#include <string>
#include <vector>

#include "conformance/report.h"
#include "conformance/runner.h"

namespace {

using motion::conformance::Check;
using motion::conformance::CheckResult;
using motion::conformance::Checks;

enum ExitCode { ALL_PASSED = 0, SOME_FAILED = 1, BAD_INPUT = 2 };

struct Options {
  std::string bundle;
  std::string filter;
  bool json = false;
  bool list = false;
  int timeLimit = static_cast<int>(motion::conformance::DEFAULT_TIME_LIMIT.count());
};

Options parse(int argc, char** argv) {
  Options options;
  CLI::App app(
      "Looks at a bundle of Motion.Kavo from outside: what it answers, calls, publishes, registers and traces.\n"
      "Each check runs in a process of its own. Exit code: 0 all passed, 1 some did not, 2 bad input.",
      "kavo-conformance");
  app.add_option("--bundle", options.bundle, "directory that holds libmotion_kavo.so and bfbs/")->type_name("DIR");
  app.add_option("--filter", options.filter, "only the checks whose name holds this text")->type_name("NAME");
  app.add_option("--time-limit", options.timeLimit, "limit of a check that has none of its own, in seconds")
      ->type_name("S")
      ->check(CLI::Range(1, 3600));
  app.add_flag("--json", options.json, "the whole report for programs");
  app.add_flag("--list", options.list, "name the checks and what they say; run nothing");
  try {
    app.parse(argc, argv);
    if (options.bundle.empty() && !options.list) {
      throw CLI::RequiredError("--bundle");
    }
  } catch (const CLI::ParseError& error) {
    const bool wantsHelp = error.get_exit_code() == static_cast<int>(CLI::ExitCodes::Success);
    app.exit(error);
    std::exit(wantsHelp ? ALL_PASSED : BAD_INPUT);
  }
  return options;
}

int refuse(const std::string& text) {
  fmt::print(stderr, "kavo-conformance: {}\n", text);
  return BAD_INPUT;
}

int run(const Options& options, const Checks& checks) {
  const auto directory = std::filesystem::absolute(options.bundle);
  if (!std::filesystem::is_regular_file(directory / "libmotion_kavo.so")) {
    return refuse(fmt::format("{}: there is no libmotion_kavo.so; name the directory of a built bundle", options.bundle));
  }
  std::vector<CheckResult> results;
  for (const auto& check : checks) {
    results.push_back({&check, runCheck(check, directory, std::chrono::seconds(options.timeLimit))});
    if (!options.json) {
      fmt::print("{}\n", lineOf(results.back()));
      std::fflush(stdout);
    }
  }
  fmt::print("{}\n", options.json ? jsonOf(options.bundle, results) : "\n" + summaryOf(results));
  for (const auto& result : results) {
    if (result.verdict.outcome != motion::conformance::Outcome::PASSED) {
      return SOME_FAILED;
    }
  }
  return ALL_PASSED;
}

}  // namespace

int main(int argc, char** argv) {
  try {
    const auto options = parse(argc, argv);
    auto checks = motion::conformance::allChecks();
    std::erase_if(checks, [&options](const Check& check) { return check.name.find(options.filter) == std::string::npos; });
    if (checks.empty()) {
      return refuse(fmt::format("no check has \"{}\" in its name; --list names them all", options.filter));
    }
    if (options.list) {
      for (const auto& check : checks) {
        fmt::print("{:<48} {}\n", check.name, check.sentence);
      }
      return ALL_PASSED;
    }
    return run(options, checks);
  } catch (const std::exception& error) {
    return refuse(error.what());
  }
}
