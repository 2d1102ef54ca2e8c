// A host with the real bundle whose objects do everything that commands can do, for tests of the cyclic path.
#include "realtime/busy_host.h"

#include <stdexcept>

#include "host/motion/builtin/builtin_cmds.h"

namespace motion::test {

using core::FctResult;
using core::ObjectType;
using host::EventKind;

namespace {

constexpr std::size_t EVENTS = 1U << 12U;
constexpr std::uint32_t WAITING_CMDS = 3;  // kept in each buffer

// Who uses which signal.
constexpr unsigned int PART_READY = 1;    // sender -> receiver
constexpr unsigned int PART_TAKEN = 2;    // receiver -> sender's watcher
constexpr unsigned int FROM_OUTSIDE = 3;  // outside -> gate keeper
constexpr unsigned int SET_BY_TWO = 4;    // outside and double setter; nobody resets it in between
constexpr unsigned int NEVER_SET = 5;     // idle waiter

void require(bool isFine, const std::string& what) {
  if (!isFine) {
    throw std::runtime_error(what + " was refused");
  }
}

const core::MotionCmdGeneralFctT& functions(host::Runtime& runtime) {
  return *runtime.records().cmd2.general;
}

}  // namespace

OpenSession::OpenSession(double cycleTime)
    : m_session({KAVO_TEST_BUNDLE_DIR, {cycleTime, 64}, host::framework::ComponentLifecycle::DEFAULT_TIME_LIMIT, false}) {
  std::string problem;
  if (!m_session.open(problem)) {
    throw std::runtime_error(problem);
  }
}

bool OpenSession::setSignal(unsigned int signal) {
  const core::MotionSysIf2T& sys = runtime().records().sys2;
  return sys.sync->setSignal(sys.context, signal) == FctResult::Okay;
}

bool OpenSession::resetSignal(unsigned int signal) {
  const core::MotionSysIf2T& sys = runtime().records().sys2;
  return sys.sync->resetSignal(sys.context, signal) == FctResult::Okay;
}

bool OpenSession::abortCmds(const std::string& object) {
  const core::MotionSysIf2T& sys = runtime().records().sys2;
  return sys.general->abortCmds(sys.context, object.c_str()) == FctResult::Okay;
}

Call setSignalCall(unsigned int signal) {
  return [signal](host::Runtime& runtime, const char* object) {
    unsigned long id = 0;
    return functions(runtime).setSignalCmd(&runtime, {}, object, signal, id) == FctResult::Okay;
  };
}

Call resetSignalCall(unsigned int signal) {
  return [signal](host::Runtime& runtime, const char* object) {
    unsigned long id = 0;
    return functions(runtime).resetSignalCmd(&runtime, {}, object, signal, id) == FctResult::Okay;
  };
}

Call waitForSignalCall(unsigned int signal, bool autoReset) {
  return [signal, autoReset](host::Runtime& runtime, const char* object) {
    unsigned long id = 0;
    return functions(runtime).waitForSignalCmd(&runtime, {}, object, signal, autoReset, id) == FctResult::Okay;
  };
}

Call waitForSignalResetCall(unsigned int signal) {
  return [signal](host::Runtime& runtime, const char* object) {
    unsigned long id = 0;
    return functions(runtime).waitForSignalResetCmd(&runtime, {}, object, signal, id) == FctResult::Okay;
  };
}

Call joinCall(const std::string& partner, bool syncStartNextCmd) {
  return [group = std::vector<std::string>{partner}, syncStartNextCmd](host::Runtime& runtime, const char* object) {
    unsigned long id = 0;
    return functions(runtime).joinCmd(&runtime, {}, object, group, syncStartNextCmd, id) == FctResult::Okay;
  };
}

Call moveCall(const char* command, double millimetres) {
  return [command, millimetres](host::Runtime& runtime, const char* object) {
    constexpr double velocity = 100.0;        // [mm/s]
    constexpr double acceleration = 10000.0;  // [mm/s^2]
    unsigned long id = 0;
    const host::builtin::AxisMovePars values(host::builtin::AxisMoveParsT{millimetres, velocity, acceleration});
    return runtime.addCmd({}, object, command, values, 1, &id) == FctResult::Okay;
  };
}

Call kinMoveCall(const char* command, std::vector<double> to, std::vector<double> via, double blending) {
  return [command, to = std::move(to), via = std::move(via), blending](host::Runtime& runtime, const char* object) {
    constexpr double velocity = 100.0;        // [mm/s]
    constexpr double acceleration = 10000.0;  // [mm/s^2]
    unsigned long id = 0;
    const host::builtin::KinMovePars values(host::builtin::KinMoveParsT{to, via, blending, velocity, acceleration});
    return runtime.addCmd({}, object, command, values, 1, &id) == FctResult::Okay;
  };
}

Call dwellCall(double seconds) {
  return [seconds](host::Runtime& runtime, const char* object) {
    unsigned long id = 0;
    return functions(runtime).dwellCmd(&runtime, {}, object, seconds, id) == FctResult::Okay;
  };
}

void EndTally::drain(host::EventRing& events) {
  for (host::Event event; events.read(event);) {
    if (event.kind == EventKind::CMD_ACTIVE) {
      m_cycles[event.cmdID].first = event.cycle;
    } else if (event.kind == EventKind::CMD_DONE) {
      m_cycles[event.cmdID].second = event.cycle;
    }
  }
  require(events.lost() == 0, "writing an event");
}

void EndTally::onRetired(const host::CmdFrame& frame) noexcept {
  Entry& entry = m_entries[{frame.name(), frame.getCmdState()}];
  ++entry.ended;
  if (const auto found = m_cycles.find(frame.getCmdID()); found != m_cycles.end()) {
    entry.inFirstCycle += found->second.first == found->second.second ? 1 : 0;
    m_cycles.erase(found);
  }
}

EndTally::Entry EndTally::of(const std::string& name, core::cmd::CmdState state) const {
  const auto found = m_entries.find({name, state});
  return found != m_entries.end() ? found->second : Entry{};
}

BusyHost::BusyHost() : m_events(EVENTS), m_open(0.001) {
  add("Sender", ObjectType::AXIS,
      {moveCall("MoveAbs", 0.5), setSignalCall(PART_READY), dwellCall(0.003), moveCall("MoveRel", -0.5),
       resetSignalCall(PART_TAKEN)});
  add("Receiver", ObjectType::KINEMATICS,
      {waitForSignalCall(PART_READY, true), dwellCall(0.002), setSignalCall(PART_TAKEN), waitForSignalResetCall(NEVER_SET)});
  add("Watcher", ObjectType::AXIS, {waitForSignalResetCall(PART_TAKEN), moveCall("MoveRel", 0.05)});
  add("GateKeeper", ObjectType::KINEMATICS, {waitForSignalCall(FROM_OUTSIDE, false), dwellCall(0.001)});
  add("DoubleSetter", ObjectType::AXIS, {setSignalCall(SET_BY_TWO), dwellCall(0.010)});
  add("Watchman", ObjectType::KINEMATICS, {waitForSignalCall(SET_BY_TWO, false), dwellCall(0.005)});
  add("Partner", ObjectType::AXIS, {joinCall("OtherPartner", true), dwellCall(0.002)});
  add("OtherPartner", ObjectType::KINEMATICS, {joinCall("Partner", false), dwellCall(0.004)});
  add("Mover", ObjectType::KINEMATICS,
      {kinMoveCall("MoveLin", {0.5, 0, 0}), kinMoveCall("MoveCirc", {0.5, 0.5, 0}, {0.75, 0.25, 0}),
       kinMoveCall("MoveLin", {0, 0, 0}, {0.25, 0.5, 0, 0, 0.5, 0}, 0.1)});
  add("Wanderer", ObjectType::KINEMATICS, {kinMoveCall("MoveLin", {0.5, 0, 0}), kinMoveCall("MoveLin", {0, 0, 0})});
  add("IdleAxis", ObjectType::AXIS, {waitForSignalCall(NEVER_SET, true)});
  add("EmptyAxis", ObjectType::AXIS, {});
  runtime().preparation().setListener(&m_tally);
}

void BusyHost::add(const std::string& name, ObjectType type, std::vector<Call> calls) {
  host::MotionObject* object = runtime().addObject(name, type, {});
  object->setEvents(&m_events);
  m_programs.push_back({object, std::move(calls), 0});
}

void BusyHost::betweenCycles() {
  m_tally.drain(m_events);
  happenOutside(runtime().cycle().begun() + 1);
  for (Program& program : m_programs) {
    feed(program);
  }
  runtime().preparation().prepareAll();
}

void BusyHost::happenOutside(std::uint64_t nextCycle) {
  if (nextCycle % 7 == 0) {
    require(m_open.setSignal(FROM_OUTSIDE), "setSignal");
  }
  if (nextCycle % 7 == 3) {
    require(m_open.resetSignal(FROM_OUTSIDE), "resetSignal");
  }
  if (nextCycle % 11 == 0) {
    // First equal, then one ahead: the next set of the other side lands on it.
    require(m_open.resetSignal(SET_BY_TWO) && m_open.setSignal(SET_BY_TWO), "setSignal");
    ++m_doubleSets;
  }
  if (nextCycle % 97 == 0) {
    require(m_open.abortCmds("Sender") && m_open.abortCmds("IdleAxis") && m_open.abortCmds("EmptyAxis"), "abortCmds");
  }
  if (nextCycle % 89 == 0) {
    require(m_open.abortCmds("Wanderer"), "abortCmds");
  }
  if (nextCycle % 101 == 0) {
    require(m_open.abortCmds("Receiver") && m_open.abortCmds("Watcher"), "abortCmds");
  }
  if (nextCycle % 103 == 0) {
    // Both, for whoever is left of an aborted join waits for ever.
    require(m_open.abortCmds("Partner") && m_open.abortCmds("OtherPartner"), "abortCmds");
  }
}

void BusyHost::feed(Program& program) {
  while (!program.calls.empty() && program.object->bufferedCount() < WAITING_CMDS) {
    require(program.calls[program.next](runtime(), program.object->name().c_str()),
            "a command of " + program.object->name());
    program.next = (program.next + 1) % program.calls.size();
  }
}

}  // namespace motion::test
