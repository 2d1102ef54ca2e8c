// From a scenario file to the record of its run: everything that `kavo run` and `kavo check` do, without printing.
#pragma once

#include <chrono>
#include <filesystem>
#include <functional>
#include <optional>
#include <string>

#include "host/framework/component_lifecycle.h"
#include "host/observe/run_record.h"
#include "host/run/player.h"
#include "host/scenario/problem.h"

namespace motion::host::run {

/// How it ended; the values are the tool's exit codes.
enum class Outcome { FINE = 0, NOT_FINE = 1, BAD_INPUT = 2, NO_BUNDLE = 3 };

struct PlayOptions {
  std::filesystem::path file;
  std::filesystem::path bundleDir;
  bool checkOnly = false;  ///< validate, but run nothing
  bool realTime = false;
  bool journal = true;  ///< the component's traces go to the system's journal
  std::chrono::milliseconds startLimit = framework::ComponentLifecycle::DEFAULT_TIME_LIMIT;
  Watch watch;                   ///< in real time
  std::uint64_t stuckAfter = 0;  ///< see Player::setStuckAfter; in real time
};

struct PlayResult {
  Outcome outcome = Outcome::FINE;
  scenario::Problems problems;  ///< of the scenario
  std::string failure;          ///< of the bundle
  std::optional<observe::RunRecord> record;
  std::size_t objects = 0;
  std::size_t commands = 0;
  /// A call into the component never came back. The process must print what it has to say and end by std::_Exit.
  bool lost = false;
};

[[nodiscard]] PlayResult play(const PlayOptions& options);

/// What is done between the start of the bundle and its stop; it may set outcome, problems and failure.
using SessionWork = std::function<void(Session& session, const scenario::Scenario& scenario, PlayResult& result)>;

/// Reads the scenario, starts the bundle, lets `work` do its part, and stops the bundle. [framework]
[[nodiscard]] PlayResult playInSession(const PlayOptions& options, const SessionWork& work);

/// Creates the scenario's objects. Before the first cycle. [framework]
void addObjects(Runtime& runtime, const scenario::Scenario& scenario);

}  // namespace motion::host::run
