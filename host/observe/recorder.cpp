#include "host/observe/recorder.h"

#include <fmt/format.h>

#include "host/support/guarded.h"

namespace motion::host::observe {

using core::cmd::CmdState;

namespace {

/// Events that fit between two drains; a thousand objects that all change within one cycle still have room.
constexpr std::size_t EVENT_CAPACITY = 1U << 16U;

}  // namespace

Recorder::Recorder(SignalWatch& watch, RunRecord& record) : m_watch(watch), m_record(record), m_events(EVENT_CAPACITY) {}

void Recorder::attach(std::span<const std::unique_ptr<MotionObject>> objects) {
  for (const auto& object : objects) {
    object->setEvents(&m_events);
    m_record.objects.push_back({object->name(), object->type(), object->pose(), object->pose(), {}});
  }
  m_issued.resize(objects.size());
  m_lastActive.resize(objects.size());
}

void Recorder::setProbes(std::vector<Probe> probes) {
  m_probes = std::move(probes);
}

void Recorder::setProgram(std::uint32_t object, std::vector<CmdDescription> program) {
  auto& commands = m_record.objects.at(object).commands;
  for (CmdDescription& description : program) {
    CmdRecord command;
    command.object = object;
    command.number = commands.size() + 1;
    command.name = std::move(description.name);
    command.parameters = std::move(description.parameters);
    command.options = std::move(description.options);
    command.line = description.line;
    command.waits = description.waits;
    command.waitsFor = std::move(description.waitsFor);
    command.signal = description.signal;
    command.sync = std::move(description.sync);
    commands.push_back(std::move(command));
  }
}

void Recorder::beforeObjects(std::uint64_t cycle) noexcept {
  m_watch.look(m_events, cycle, OUTSIDE);
}

void Recorder::afterObject(std::uint64_t cycle, const MotionObject& object) noexcept {
  m_watch.look(m_events, cycle, object.index());
}

void Recorder::afterObjects(std::uint64_t cycle) noexcept {
  while (m_nextProbe < m_probes.size() && m_probes[m_nextProbe].cycle <= cycle) {
    Probe& probe = m_probes[m_nextProbe++];
    probe.taken = true;
    if (probe.isSignal) {
      probe.value = m_watch.value(probe.signal);
    } else {
      probe.position = probe.object->pose();
    }
  }
}

void Recorder::onBuffered(const CmdFrame& frame, std::uint64_t cycle) noexcept {
  addNote(Note::Kind::BUFFERED, frame, cycle, [&] { return frame.name(); });
}

void Recorder::onPrepared(const CmdFrame& frame, std::uint64_t cycle) noexcept {
  addNote(Note::Kind::PREPARED, frame, cycle, [] { return std::string(); });
}

void Recorder::onDropped(const CmdFrame& frame, std::uint64_t cycle) noexcept {
  addNote(Note::Kind::DROPPED, frame, cycle, [] { return std::string(); });
}

void Recorder::onRetired(const CmdFrame& frame) noexcept {
  addNote(Note::Kind::RETIRED, frame, 0, [&] {
    const bool failed = frame.getCmdState() == CmdState::FAILED;
    return failed ? fmt::format("job '{}' gave 0x{:08X}", frame.failure.failedJob, core::toCode(frame.failure.result)) : "";
  });
}

template <typename TEXT>
void Recorder::addNote(Note::Kind kind, const CmdFrame& frame, std::uint64_t cycle, const TEXT& makeText) noexcept {
  const std::scoped_lock lock(m_mutex);
  const bool isNoted = guarded(false, [&] {
    m_notes.push_back({kind, frame.getCmdID(), frame.object().index(), cycle, frame.getCmdState(), makeText()});
    return true;
  });
  m_lostNotes += isNoted ? 0 : 1;
}

std::size_t Recorder::drain() {
  drainNotes();
  std::size_t count = 0;
  for (Event event; m_events.read(event); ++count) {
    m_lastEventCycle = event.cycle;
    take(event);
  }
  const std::scoped_lock lock(m_mutex);
  m_record.lostEvents = m_events.lost() + m_lostNotes;
  return count;
}

void Recorder::drainNotes() {
  std::vector<Note> notes;
  {
    const std::scoped_lock lock(m_mutex);
    notes.swap(m_notes);
  }
  for (const Note& note : notes) {
    take(note);
  }
}

void Recorder::take(const Note& note) {
  if (note.kind == Note::Kind::BUFFERED) {
    takeBuffered(note);
    return;
  }
  CmdRecord* command = find(note.cmdID);
  if (command == nullptr) {
    return;
  }
  switch (note.kind) {
    case Note::Kind::PREPARED:
      command->prepared = note.cycle;
      if (command->state == CmdState::BUFFERED) {
        command->state = CmdState::PREPARED;  // unless the cycle was faster than this note
      }
      break;
    case Note::Kind::DROPPED:
      setState(*command, note.state, note.cycle);
      break;
    default:
      command->failure = note.text;
      break;
  }
}

void Recorder::takeBuffered(const Note& note) {
  auto& commands = m_record.objects.at(note.object).commands;
  const std::size_t position = m_issued.at(note.object)++;
  if (position == commands.size()) {
    // Issued by somebody else than the scenario.
    commands.emplace_back();
    commands.back().object = note.object;
    commands.back().number = commands.size();
    commands.back().name = note.text;
  }
  CmdRecord& command = commands.at(position);
  command.id = note.cmdID;
  command.state = CmdState::BUFFERED;
  command.buffered = note.cycle;
  m_byID.emplace(note.cmdID, std::pair{note.object, position});
}

void Recorder::take(const Event& event) {
  if (event.kind == EventKind::SIGNAL_SET || event.kind == EventKind::SIGNAL_RESET) {
    takeSignal(event);
    return;
  }
  CmdRecord* command = find(event.cmdID);
  if (command == nullptr) {
    // Preparation noted the command before the cycle could get it, but after the notes were drained.
    drainNotes();
    command = find(event.cmdID);
  }
  if (command == nullptr) {
    return;
  }
  switch (event.kind) {
    case EventKind::CMD_ACTIVE:
      setState(*command, CmdState::ACTIVE, event.cycle);
      break;
    case EventKind::CMD_DONE:
      setState(*command, CmdState::DONE, event.cycle);
      break;
    case EventKind::CMD_ABORTED:
      setState(*command, CmdState::ABORTED, event.cycle);
      break;
    case EventKind::CMD_FAILED:
      setState(*command, CmdState::FAILED, event.cycle);
      break;
    case EventKind::MOTION_BEGAN:
      command->motionBegan = event.cycle;
      m_record.steps.push_back({StepRecord::Kind::MOTION_BEGAN, event.cycle, command->object, command->number, 0});
      break;
    default:
      break;
  }
}

void Recorder::setState(CmdRecord& command, CmdState state, std::uint64_t cycle) {
  command.state = state;
  StepRecord::Kind kind = StepRecord::Kind::ACTIVE;
  if (state == CmdState::ACTIVE) {
    command.active = cycle;
    m_lastActive.at(command.object) = command.number;
  } else {
    command.ended = cycle;
    kind = state == CmdState::DONE     ? StepRecord::Kind::DONE
           : state == CmdState::FAILED ? StepRecord::Kind::FAILED
                                       : StepRecord::Kind::ABORTED;
  }
  m_record.steps.push_back({kind, cycle, command.object, command.number, 0});
}

void Recorder::takeSignal(const Event& event) {
  const bool isSet = event.kind == EventKind::SIGNAL_SET;
  const std::size_t number = event.object == OUTSIDE ? 0 : m_lastActive.at(event.object);
  m_record.signals.push_back({event.cycle, event.detail, isSet, event.object, number});
  m_record.steps.push_back({isSet ? StepRecord::Kind::SIGNAL_SET : StepRecord::Kind::SIGNAL_RESET, event.cycle, event.object,
                            number, event.detail});
}

CmdRecord* Recorder::find(std::uint64_t cmdID) {
  const auto found = m_byID.find(cmdID);
  return found != m_byID.end() ? &m_record.objects.at(found->second.first).commands.at(found->second.second) : nullptr;
}

}  // namespace motion::host::observe
