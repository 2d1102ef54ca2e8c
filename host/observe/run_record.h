// What a run was: commands with their times, changes of signals, and how it ended.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "host/motion/setpoint.h"
#include "host/observe/sync_step.h"
#include "motion/core/cmd/cmd_state.h"
#include "motion/core/object_type.h"

namespace motion::host::observe {

/// One command of an object's program. Cycles count from 1; 0 = it did not come to that.
struct CmdRecord {
  std::uint64_t id = 0;
  std::uint32_t object = 0;
  std::size_t number = 0;  ///< place among the object's commands, from 1
  std::string name;
  std::string parameters;               ///< as the user wrote them
  std::vector<std::string> options;     ///< that stand at the command, likewise
  std::size_t line = 0;                 ///< in the scenario file, 0 = unknown
  bool waits = false;                   ///< a command that only waits for others
  std::string waitsFor;                 ///< in words; empty when it is not known
  std::optional<std::uint32_t> signal;  ///< the signal that it waits for
  SyncStep sync;                        ///< the same for the host's own use
  core::cmd::CmdState state = core::cmd::CmdState::CREATED;
  std::uint64_t buffered = 0;
  std::uint64_t prepared = 0;
  std::uint64_t active = 0;
  std::uint64_t motionBegan = 0;
  std::uint64_t ended = 0;
  std::string failure;  ///< why it failed
};

/// A signal that changed.
struct SignalRecord {
  std::uint64_t cycle = 0;
  std::uint32_t signal = 0;
  bool value = false;
  std::uint32_t object = 0;  ///< index, or OUTSIDE
  std::size_t number = 0;    ///< the object's command that did it, 0 when unknown
};

/// One step of a run in the order in which it happened: a command's change of state, or a signal.
struct StepRecord {
  enum class Kind { ACTIVE, DONE, ABORTED, FAILED, MOTION_BEGAN, SIGNAL_SET, SIGNAL_RESET };
  Kind kind = Kind::ACTIVE;
  std::uint64_t cycle = 0;
  std::uint32_t object = 0;
  std::size_t number = 0;
  std::uint32_t signal = 0;
};

struct ObjectRecord {
  std::string name;
  core::ObjectType type = core::ObjectType::AXIS;
  Point startPosition{};  ///< of an axis the first of the three
  Point endPosition{};
  std::vector<CmdRecord> commands;
};

/// A switching condition of an option, and what became of it. Points and distances in [m].
struct TriggerRecord {
  /// One look at it, at the end of a cycle.
  struct Look {
    std::uint64_t cycle = 0;
    std::size_t number = 0;  ///< the object's command
    Point position{};        ///< of the tool
    double distance = 0.0;   ///< of the tool, or of the point ahead of it, to the target
    double toolDistance = 0.0;
  };
  /// Where the path came nearest to the target between two cycles.
  struct Pass {
    std::uint64_t cycle = 0;  ///< the later of the two
    double distance = 0.0;
    double speed = 0.0;   ///< of the tool [m/s]
    bool isLeap = false;  ///< the point moved on by the pre-trigger time too: before that, it was not ahead of the tool
  };
  /// A command that carried it.
  struct Carrier {
    std::size_t number = 0;
    std::uint64_t cycle = 0;  ///< the first in which it was looked at, 0 = it did not come to that
  };

  std::uint32_t object = 0;
  std::size_t line = 0;  ///< of the option in the scenario file, 0 = unknown
  std::uint32_t signal = 0;
  bool sets = true;  ///< else it resets
  Point target{};
  double radius = 0.0;
  double preTriggerTime = 0.0;    ///< [s]
  std::vector<Carrier> carriers;  ///< the first armed it, the others took it over
  std::optional<Look> fired;
  std::optional<Look> entered;  ///< the tool itself was first seen in the sphere, at the earliest when it fired
  std::optional<Look> nearest;  ///< of all looks before it fired
  std::optional<Pass> nearestPass;
  bool isSpent = false;  ///< it fired, though its signal could not be switched
};

/// What a component told the user of an object.
struct DiagnosisRecord {
  std::uint32_t object = 0;
  std::uint32_t mainCode = 0;
  std::uint32_t detailCode = 0;
  std::size_t line = 0;  ///< of the command or option, 0 = unknown
  std::string text;
};

struct ExpectationRecord {
  std::string text;
  std::size_t line = 0;
  bool holds = false;
  std::string reason;  ///< why not
};

struct Punctual {
  std::uint64_t cycles = 0;
  std::uint64_t overruns = 0;
  double latestWakeUp = 0.0;  ///< [s]
};

struct RunRecord {
  std::string file;
  double cycleTime = 0.001;  ///< [s]
  bool realTime = false;
  std::string warning;  ///< about real time
  std::uint64_t cycles = 0;
  std::vector<std::string> signalNames;  ///< by number; empty = unnamed
  std::vector<ObjectRecord> objects;
  std::vector<SignalRecord> signals;
  std::vector<StepRecord> steps;
  std::vector<TriggerRecord> triggers;  ///< in the order in which they were armed
  std::vector<DiagnosisRecord> diagnoses;
  std::vector<ExpectationRecord> expectations;
  std::vector<std::string> messages;  ///< warnings and errors that the component traced
  std::vector<std::string> failures;  ///< commands that failed although nobody expected it
  std::string stuck;                  ///< why no object could move any more, or the limit was reached; empty when all ended
  std::uint64_t lostEvents = 0;
  std::optional<Punctual> punctuality;

  /// True when nothing got stuck or failed unexpectedly, no event was lost and every expectation holds.
  [[nodiscard]] bool isFine() const;
};

/// "Feeder#2"
[[nodiscard]] std::string commandText(const RunRecord& record, std::uint32_t object, std::size_t number);
/// "signal 5 'part in place'"
[[nodiscard]] std::string signalText(const RunRecord& record, std::uint32_t signal);
/// "by Feeder#2", "from outside"
[[nodiscard]] std::string authorText(const RunRecord& record, std::uint32_t object, std::size_t number);
/// Start of a cycle on the scenario's clock [s].
[[nodiscard]] double cycleStart(const RunRecord& record, std::uint64_t cycle);
/// The change of the signal that let the command go on; none when it did not wait for a signal or has not ended by itself.
[[nodiscard]] std::optional<StepRecord> releasedBy(const RunRecord& record, const CmdRecord& command);

}  // namespace motion::host::observe
