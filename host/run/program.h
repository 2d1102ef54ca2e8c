// Turns the commands of a scenario into what the registered commands expect, and checks them before anything runs.
#pragma once

#include <functional>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "host/motion/runtime.h"
#include "host/observe/recorder.h"
#include "host/run/program_options.h"
#include "host/scenario/scenario.h"

namespace motion::host::run {

/// A command that is ready to be issued.
struct ProgramCall {
  std::string name;
  comm::datalayer::Variant parameters;
  core::dia::CmdSourceInfo source;
  std::vector<EncodedOption> options;  ///< that stand at the command
  observe::CmdDescription description;
  scenario::Mark mark;
  double velocity = 0.0;                  ///< [m/s] that the command asks for, 0 = none
  std::vector<PathCondition> conditions;  ///< of all options that accompany the command

  /// For the duration of a call.
  [[nodiscard]] EncodedCmd encoded() const noexcept { return {name, parameters, source, options}; }
};

struct ObjectCalls {
  MotionObject* object = nullptr;
  std::vector<ProgramCall> calls;
};

struct ProgramResult {
  std::vector<ObjectCalls> programs;
  scenario::Problems problems;
};

/// Gives what the component has said since it was last asked.
using TakeMessages = std::function<std::vector<std::string>()>;

/// Looks up every command, encodes its parameters through the registered schema, and lets it check them, without buffering
/// anything. All problems are collected. The scenario's objects exist in the runtime already. [framework]
[[nodiscard]] ProgramResult prepareProgram(const scenario::Scenario& scenario, Runtime& runtime,
                                           const TakeMessages& takeMessages);

/// A value in one line, as it could stand in a scenario.
[[nodiscard]] std::string valueText(const scenario::Value& value);

}  // namespace motion::host::run
