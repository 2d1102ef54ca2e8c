// The options that a scenario gives along with commands: encoded, and followed through the program of an object.
#pragma once

#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "host/motion/runtime.h"
#include "host/observe/sync_step.h"
#include "host/scenario/scenario.h"

namespace motion::host::run {

/// A sphere on the path of a command.
struct PathCondition {
  double radius = 0.0;  ///< [m]
  scenario::Mark mark;  ///< of the option
};

/// An option that is ready to be issued with its command.
struct ReadyOption {
  EncodedOption encoded;
  std::string text;  ///< as the user wrote it, in one line
  scenario::Mark mark;
};

/// What accompanies the commands of one object, as far as it can be known before anything runs.
class ProgramOptions {
 public:
  /// All are borrowed.
  ProgramOptions(const Runtime& runtime, const MotionObject& object, const std::string& file)
      : m_runtime(runtime), m_object(object), m_file(file) {}

  /// Encodes the options that stand at a command; what is wrong goes to `problems`, and then nothing is returned.
  [[nodiscard]] std::vector<ReadyOption> encode(const scenario::CommandCall& call, const CmdEntry& command,
                                                scenario::Problems& problems) const;
  /// Takes note of these options and of the command that they stand at. Commands come in their order.
  void follow(const std::vector<ReadyOption>& options, const CmdEntry& command);
  /// What accompanies the command that was followed last.
  [[nodiscard]] const std::vector<observe::OptionEffect>& effects() const noexcept { return m_effects; }
  [[nodiscard]] const std::vector<PathCondition>& conditions() const noexcept { return m_conditions; }

 private:
  /// What one option does, and where.
  struct Deed {
    observe::OptionEffect effect;
    PathCondition condition;
  };
  using Deeds = std::vector<Deed>;

  /// The options of one name.
  struct InForce {
    Deeds once;
    Deeds permanent;
    Deeds latest;  ///< that a new one may be stacked upon
  };

  void take(const ReadyOption& option);
  void accompany(const CmdOptionEntry& option, InForce& inForce, const CmdEntry& command);
  [[nodiscard]] Deed deedOf(const ReadyOption& option, const CmdOptionEntry& entry) const;
  [[nodiscard]] std::vector<std::string> namesFor(const CmdEntry& command) const;

  const Runtime& m_runtime;
  const MotionObject& m_object;
  const std::string& m_file;
  std::map<std::string, InForce> m_inForce;
  std::vector<observe::OptionEffect> m_effects;
  std::vector<PathCondition> m_conditions;
};

}  // namespace motion::host::run
