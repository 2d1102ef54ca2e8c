// Records of runs by hand: objects with their commands, each with what it is for others and how far it came.
#pragma once

#include <string>
#include <utility>
#include <vector>

#include "host/motion/events.h"
#include "host/observe/run_record.h"

namespace motion::host::observe {

inline SyncStep signalStep(SyncKind kind, std::uint32_t signal) {
  SyncStep step;
  step.kind = kind;
  step.signal = signal;
  return step;
}
inline SyncStep works() {
  return {};
}
inline SyncStep sets(std::uint32_t signal) {
  return signalStep(SyncKind::SETS, signal);
}
inline SyncStep resets(std::uint32_t signal) {
  return signalStep(SyncKind::RESETS, signal);
}
inline SyncStep waitsSet(std::uint32_t signal) {
  return signalStep(SyncKind::WAITS_SET, signal);
}
inline SyncStep waitsReset(std::uint32_t signal) {
  return signalStep(SyncKind::WAITS_RESET, signal);
}
inline SyncStep consumes(std::uint32_t signal) {
  SyncStep step = waitsSet(signal);
  step.consumes = true;
  return step;
}
inline SyncStep joins(std::vector<std::uint32_t> group, bool awaitsNext = false) {
  SyncStep step;
  step.kind = SyncKind::JOINS;
  step.group = std::move(group);
  step.awaitsNext = awaitsNext;
  return step;
}
/// The same with options: signal, whether it is set, whether that happens on the path.
inline SyncStep with(SyncStep step, std::vector<OptionEffect> options) {
  step.options = std::move(options);
  return step;
}
inline SyncStep joinsTwice(std::vector<std::uint32_t> group) {
  SyncStep step = joins(std::move(group));
  step.namesTwice = true;
  return step;
}

/// A command that came so far.
inline CmdRecord command(SyncStep step, core::cmd::CmdState state, std::uint64_t active = 0, std::uint64_t ended = 0) {
  CmdRecord command;
  command.sync = std::move(step);
  command.waits = isWait(command.sync.kind);
  command.state = state;
  command.prepared = state == core::cmd::CmdState::CREATED || state == core::cmd::CmdState::BUFFERED ? 0 : 1;
  command.active = active;
  command.ended = ended;
  return command;
}
inline CmdRecord done(SyncStep step, std::uint64_t active, std::uint64_t ended) {
  return command(std::move(step), core::cmd::CmdState::DONE, active, ended);
}
inline CmdRecord since(std::uint64_t active, SyncStep step) {
  return command(std::move(step), core::cmd::CmdState::ACTIVE, active);
}
/// Prepared, but not its object's turn.
inline CmdRecord ahead(SyncStep step) {
  return command(std::move(step), core::cmd::CmdState::PREPARED);
}
inline CmdRecord buffered(SyncStep step) {
  return command(std::move(step), core::cmd::CmdState::BUFFERED);
}
/// Of the program, but not issued.
inline CmdRecord created(SyncStep step) {
  return command(std::move(step), core::cmd::CmdState::CREATED);
}
inline CmdRecord aborted(SyncStep step, std::uint64_t active, std::uint64_t ended) {
  return command(std::move(step), core::cmd::CmdState::ABORTED, active, ended);
}
inline CmdRecord failed(SyncStep step, std::uint64_t active, std::uint64_t ended) {
  return command(std::move(step), core::cmd::CmdState::FAILED, active, ended);
}

struct ObjectScript {
  std::string name;
  std::vector<CmdRecord> commands;
};

inline std::string waitsForText(const std::vector<ObjectScript>& objects, std::size_t self, const SyncStep& step) {
  if (step.kind != SyncKind::JOINS) {
    return isWait(step.kind) ? "signal " + std::to_string(step.signal) : "";
  }
  std::string text;
  for (const std::uint32_t member : step.group) {
    text += member == self ? "" : (text.empty() ? "" : ", ") + objects.at(member).name;
  }
  return text;
}

/// A run of `cycles` cycles of one millisecond. Commands get their numbers, names by what they do, and lines: the second
/// command of the first object is in line 12, of the second object in line 22.
inline RunRecord recordOf(const std::vector<ObjectScript>& objects, std::uint64_t cycles = 100) {
  constexpr const char* NAMES[] = {"Work", "Set", "Reset", "Wait", "WaitReset", "Join"};
  RunRecord record;
  record.cycles = cycles;
  for (std::size_t object = 0; object < objects.size(); ++object) {
    ObjectRecord made;
    made.name = objects[object].name;
    for (CmdRecord command : objects[object].commands) {
      command.object = static_cast<std::uint32_t>(object);
      command.number = made.commands.size() + 1;
      command.line = (object + 1) * 10 + command.number;
      command.name = NAMES[static_cast<std::size_t>(command.sync.kind)];
      command.waitsFor = waitsForText(objects, object, command.sync);
      made.commands.push_back(std::move(command));
    }
    record.objects.push_back(std::move(made));
  }
  return record;
}

/// A record in which a signal changed by somebody's hand.
inline RunRecord withSignal(RunRecord record, std::uint32_t signal, bool value) {
  record.signals.push_back({1, signal, value, OUTSIDE, 0});
  return record;
}

}  // namespace motion::host::observe
