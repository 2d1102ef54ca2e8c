// kavo: plays and checks scenarios of synchronised motion objects.
#include <fmt/format.h>
#include <unistd.h>

#include <CLI/CLI.hpp>
#include <atomic>
#include <csignal>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <nlohmann/json.hpp>
#include <string>
#include <system_error>

#include "door_commands.h"
#include "host/observe/json_report.h"
#include "host/observe/text_report.h"
#include "host/run/nodes.h"
#include "host/run/play.h"
#include "run_door.h"

namespace {

using motion::host::run::Outcome;
using motion::host::run::PlayOptions;
using motion::host::run::PlayResult;

constexpr const char* EXIT_CODES =
    "Exit codes: 0 fine; 1 an expectation failed, a command failed or an object is stuck (check: would be); 2 bad input;\n"
    "3 the bundle could not be loaded, started or stopped.";

/// Raised by SIGUSR1, lowered by whoever has explained.
std::atomic<bool> g_isExplanationWanted{false};

void onUserSignal(int /*signal*/) {
  g_isExplanationWanted.store(true, std::memory_order_relaxed);
}

struct Arguments {
  PlayOptions play;
  bool json = false;
  bool events = false;
  double startLimit = 30.0;  // [s]
  std::vector<std::string> scopes;
  bool unrestricted = false;
};

/// The bundle of the build tree or installation that this program belongs to.
std::filesystem::path defaultBundle() {
  std::error_code error;
  const auto program = std::filesystem::read_symlink("/proc/self/exe", error);
  return error ? std::filesystem::path("bundle") : program.parent_path().parent_path() / "bundle";
}

void addCommonOptions(CLI::App& command, Arguments& arguments) {
  command.add_option("FILE", arguments.play.file, "scenario file (YAML)")->required();
  command.add_option("--bundle", arguments.play.bundleDir, "directory of the bundle")->default_str(defaultBundle().string());
  command
      .add_option("--start-limit", arguments.startLimit, "seconds after which a component that does not start is given up")
      ->default_val(30.0)
      ->check(CLI::Range(0.01, 3600.0));
  command.add_flag("--json", arguments.json, "print the result as JSON");
}

void showProgress(const motion::host::run::Progress& progress) {
  fmt::print(stderr, "\r{:8.2f} s, {} of {} commands ended", progress.time, progress.ended, progress.total);
}

std::string problemsAsJson(const PlayResult& result) {
  nlohmann::ordered_json json{
      {"ok", result.outcome == Outcome::FINE},
      {"objects", result.objects},
      {"commands", result.commands},
      {"failure", result.failure.empty() ? nlohmann::ordered_json(nullptr) : nlohmann::ordered_json(result.failure)},
      {"problems", nlohmann::ordered_json::array()}};
  for (const auto& problem : result.problems) {
    json["problems"].push_back({{"file", problem.file},
                                {"line", problem.mark.line},
                                {"column", problem.mark.column},
                                {"message", problem.message},
                                {"remedy", problem.remedy},
                                {"warning", problem.warning}});
  }
  return json.dump(2, ' ', false, nlohmann::ordered_json::error_handler_t::replace) + "\n";
}

void printProblems(const PlayResult& result) {
  for (const auto& problem : result.problems) {
    fmt::print(stderr, "{}{}\n", problem.warning ? "warning: " : "", problem.text());
  }
  if (!result.failure.empty()) {
    fmt::print(stderr, "{}\n", result.failure);
  }
}

void print(const PlayResult& result, const Arguments& arguments) {
  if (arguments.json) {
    fmt::print("{}", result.record ? motion::host::observe::jsonReport(*result.record) : problemsAsJson(result));
    if (result.record && !result.failure.empty()) {
      fmt::print(stderr, "{}\n", result.failure);
    }
    return;
  }
  printProblems(result);
  if (result.record) {
    fmt::print("{}", arguments.events ? motion::host::observe::eventList(*result.record)
                                      : motion::host::observe::textReport(*result.record));
  } else if (result.outcome == Outcome::FINE) {
    fmt::print("{}: {} objects, {} commands, nothing wrong found\n", arguments.play.file.string(), result.objects,
               result.commands);
  }
}

void complete(Arguments& arguments) {
  if (arguments.play.bundleDir.empty()) {
    arguments.play.bundleDir = defaultBundle();
  }
  arguments.play.startLimit = std::chrono::milliseconds(static_cast<std::int64_t>(arguments.startLimit * 1e3));
}

int exitCode(const PlayResult& result) {
  std::fflush(nullptr);
  const int code = static_cast<int>(result.outcome);
  if (result.lost) {
    // A thread still runs in the component; destroying anything under it would be wrong.
    std::_Exit(code);
  }
  return code;
}

int showNodes(const Arguments& arguments) {
  namespace run = motion::host::run;
  const run::NodesResult result =
      run::lookAtNodes({arguments.play, arguments.unrestricted ? std::nullopt : std::optional(arguments.scopes)});
  printProblems(result.play);
  if (result.seen) {
    fmt::print("{}", arguments.json ? motion::host::observe::nodesJson(*result.seen)
                                    : motion::host::observe::nodesText(*result.seen));
  }
  return exitCode(result.play);
}

int play(Arguments& arguments) {
  PlayOptions& options = arguments.play;
  const bool onTerminal = isatty(STDERR_FILENO) != 0;
  if (onTerminal) {
    options.watch.onProgress = showProgress;
  }
  if (options.realTime) {
    static_cast<void>(std::signal(SIGUSR1, onUserSignal));
    options.watch.wantsExplanation = [] { return g_isExplanationWanted.exchange(false, std::memory_order_relaxed); };
    options.watch.onExplanation = [](const std::string& text) { fmt::print(stderr, "\n{}\n", text); };
  }
  const PlayResult result = motion::host::run::play(options);
  if (onTerminal && options.realTime) {
    fmt::print(stderr, "\r\033[K");
  }
  print(result, arguments);
  return exitCode(result);
}

}  // namespace

int main(int argc, char** argv) {
  CLI::App app{"Plays and checks scenarios of motion objects that synchronise through signals.", "kavo"};
  app.footer(EXIT_CODES);
  app.set_version_flag("--version", "kavo " KAVO_VERSION);
  app.require_subcommand(1);

  Arguments arguments;
  CLI::App* run = app.add_subcommand("run", "play a scenario and print what happened");
  addCommonOptions(*run, arguments);
  run->add_flag("--real-time", arguments.play.realTime, "run in real time instead of virtual time");
  run->add_option("--stuck-after", arguments.play.stuckAfter,
                  "in real time: cycles without any event after which objects that wait are given up")
      ->needs("--real-time")
      ->check(CLI::Range(std::uint64_t{1}, std::uint64_t{1'000'000'000}));
  run->add_flag("--events", arguments.events, "print only the list of events, one a line")->excludes("--json");
  motion::host::app::RunDoor door(*run, "kavo " KAVO_VERSION);
  run->footer(std::string(EXIT_CODES) + "\nIn real time SIGUSR1 prints who waits for whom at that moment.");
  CLI::App* check = app.add_subcommand("check", "read and validate a scenario without running it");
  addCommonOptions(*check, arguments);
  check->footer(EXIT_CODES);
  CLI::App* nodes = app.add_subcommand("nodes", "start the bundle and print what a client sees of the data layer");
  addCommonOptions(*nodes, arguments);
  nodes->add_option("--scope", arguments.scopes, "scope that the client is granted; may be given several times")
      ->allow_extra_args(false);
  nodes->add_flag("--unrestricted", arguments.unrestricted, "look as the host itself, which may do everything")
      ->excludes("--scope");
  nodes->footer(std::string(EXIT_CODES) +
                "\nA client without scopes sees nothing. An operation in brackets is offered, but not to this client.");
  const motion::host::app::DoorCommands doorCommands(app);

  try {
    app.parse(argc, argv);
    if (const auto code = doorCommands.run()) {
      return *code;
    }
    if (run->parsed() && !door.open(arguments.play)) {
      return static_cast<int>(Outcome::BAD_INPUT);
    }
    arguments.play.checkOnly = check->parsed();
    complete(arguments);
    return nodes->parsed() ? showNodes(arguments) : play(arguments);
  } catch (const CLI::ParseError& error) {
    return app.exit(error) == 0 ? 0 : static_cast<int>(Outcome::BAD_INPUT);
  } catch (const std::exception& error) {
    fmt::print(stderr, "kavo: {}\n", error.what());
    return static_cast<int>(Outcome::NOT_FINE);
  }
}
