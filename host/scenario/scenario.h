// A scenario: which objects there are, what each is asked to do, what happens from outside, and what must hold.
#pragma once

#include <array>
#include <cstdint>
#include <string>
#include <variant>
#include <vector>

#include "host/motion/unit_helper.h"
#include "host/scenario/problem.h"
#include "motion/core/object_type.h"

namespace motion::host::scenario {

struct Field;

/// A value as the user wrote it, with its place.
struct Value {
  enum class Kind { EMPTY, SCALAR, LIST, MAP };

  Kind kind = Kind::EMPTY;
  std::string text;           ///< of a scalar
  bool quoted = false;        ///< a scalar in quotes is a text, whatever it looks like
  std::vector<Value> items;   ///< of a list
  std::vector<Field> fields;  ///< of a map, in the order of the file
  Mark mark;
  Mark key;  ///< where its key stands, if it is the field of a map
};

/// One field of a map.
struct Field {
  std::string key;
  Value value;
};

struct SignalName {
  std::uint32_t id = 0;
  std::string name;
};

struct ObjectDef {
  std::string name;
  core::ObjectType type = core::ObjectType::AXIS;
  std::array<double, 3> start{};  ///< [m]; an axis uses the first
  Mark mark;
  LengthUnit lengthUnit = LengthUnit::MILLIMETRE;  ///< of its commands' parameters
  TimeUnit timeUnit = TimeUnit::SECOND;
};

struct OptionCall {
  std::string name;
  Value parameters;
  Mark mark;
};

struct CommandCall {
  std::string name;
  Value parameters;  ///< without "options"
  std::vector<OptionCall> options;
  Mark mark;
};

struct ObjectProgram {
  std::string object;
  std::vector<CommandCall> commands;
  Mark mark;
};

/// The number-th command of an object's program, from 1; written "Feeder#4".
struct CommandRef {
  std::string object;
  std::size_t number = 0;
  Mark mark;
};

/// A scope that the client of an outside write holds.
struct ScopeName {
  std::string name;
  Mark mark;
};

/// Something that happens from outside, before the first cycle that begins at or after `at`.
struct OutsideEvent {
  enum class Kind { SIGNAL, ABORT };

  Kind kind = Kind::SIGNAL;
  double at = 0.0;  ///< [s]
  std::uint32_t signal = 0;
  bool value = false;
  std::vector<ScopeName> scopes{{"motion.operate", {}}};  ///< of the client that writes the signal
  bool refused = false;                                   ///< the write is expected to be refused for want of a right
  std::string object;                                     ///< of an abort
  Mark mark;
};

/// A moment: after the last cycle, or after the first cycle that begins at or after `time`.
struct Moment {
  bool end = true;
  double time = 0.0;  ///< [s]
};

struct ExpectSignal {
  Moment at;
  std::uint32_t signal = 0;
  bool value = false;
};
struct ExpectPosition {
  Moment at;
  std::string object;
  std::array<double, 3> position{};  ///< [m]; of an axis the first
  double tolerance = 0.0;            ///< distance between the points [m]
};
/// All commands start in the same cycle.
struct ExpectSameCycle {
  std::vector<CommandRef> commands;
};
/// Each command starts in a later cycle than the one before it in the list.
struct ExpectOrder {
  std::vector<CommandRef> commands;
};
struct ExpectState {
  CommandRef command;
  std::string state;  ///< "done", "aborted", "failed" or "active"
};

struct Expectation {
  std::variant<ExpectSignal, ExpectPosition, ExpectSameCycle, ExpectOrder, ExpectState> what;
  std::string text;  ///< as the user wrote it, in one line
  Mark mark;
};

struct Scenario {
  std::string file;
  double cycleTime = 0.001;       ///< [s]
  double limit = 60.0;            ///< [s] of the scenario's own time after which a run is given up
  std::uint32_t bufferSize = 64;  ///< commands that one object's buffer takes
  std::vector<SignalName> signals;
  std::vector<ObjectDef> objects;
  std::vector<ObjectProgram> programs;
  std::vector<OutsideEvent> outside;
  std::vector<Expectation> expectations;
};

}  // namespace motion::host::scenario
