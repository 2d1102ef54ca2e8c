#include "host/run/expectations.h"

#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>

#include "host/motion/whole_cycles.h"

namespace motion::host::run {

using core::cmd::CmdState;
using observe::CmdRecord;
using observe::Probe;
using scenario::CommandRef;

namespace {

std::string refText(const CommandRef& ref) {
  return fmt::format("{}#{}", ref.object, ref.number);
}

/// [mm]
std::string positionText(core::ObjectType type, const Point& position) {
  return type == core::ObjectType::KINEMATICS
             ? fmt::format("[{:.6g}, {:.6g}, {:.6g}]", position[0] * 1e3, position[1] * 1e3, position[2] * 1e3)
             : fmt::format("{:.6g}", position[0] * 1e3);
}

class Judge {
 public:
  Judge(const scenario::Scenario& scenario, const std::vector<Probe>& probes, const ObjMgr& objects,
        const observe::SignalWatch& finalSignals, const observe::RunRecord& record)
      : m_scenario(scenario), m_probes(probes), m_objects(objects), m_finalSignals(finalSignals), m_record(record) {}

  /// Why the expectation does not hold; empty when it does.
  std::string operator()(const scenario::ExpectSignal& expected) {
    const auto value = signalAt(expected);
    if (!value) {
      return notReached(expected.at);
    }
    return *value == expected.value
               ? ""
               : fmt::format("{} was {}", observe::signalText(m_record, expected.signal), *value ? "set" : "reset");
  }

  std::string operator()(const scenario::ExpectPosition& expected) {
    const auto position = positionAt(expected);
    if (!position) {
      return notReached(expected.at);
    }
    return distance(*position, expected.position) <= expected.tolerance
               ? ""
               : fmt::format("{} was at {} mm", expected.object,
                             positionText(m_objects.find(expected.object.c_str())->type(), *position));
  }

  std::string operator()(const scenario::ExpectSameCycle& expected) {
    return compareStarts(expected.commands, [](std::uint64_t before, std::uint64_t now) { return before == now; });
  }

  std::string operator()(const scenario::ExpectOrder& expected) {
    return compareStarts(expected.commands, [](std::uint64_t before, std::uint64_t now) { return before < now; });
  }

  std::string operator()(const scenario::ExpectState& expected) {
    static constexpr std::pair<CmdState, const char*> names[] = {{CmdState::ACTIVE, "active"},
                                                                 {CmdState::DONE, "done"},
                                                                 {CmdState::ABORTED, "aborted"},
                                                                 {CmdState::FAILED, "failed"}};
    const CmdState state = find(expected.command).state;
    const auto* name = std::ranges::find(names, state, &std::pair<CmdState, const char*>::first);
    const char* text = name != std::end(names) ? name->second : "not started";
    return expected.state == text ? "" : fmt::format("{} is {}", refText(expected.command), text);
  }

 private:
  [[nodiscard]] const Probe* probeFor(const scenario::Moment& at, bool isSignal, std::uint32_t signal,
                                      const MotionObject* object) const {
    const std::uint64_t cycle = firstCycleFrom(at.time, m_scenario.cycleTime);
    const auto found = std::ranges::find_if(m_probes, [&](const Probe& probe) {
      return probe.taken && probe.cycle == cycle && probe.isSignal == isSignal &&
             (isSignal ? probe.signal == signal : probe.object == object);
    });
    return found != m_probes.end() ? &*found : nullptr;
  }

  [[nodiscard]] std::optional<bool> signalAt(const scenario::ExpectSignal& expected) const {
    if (expected.at.end) {
      return m_finalSignals.value(expected.signal);
    }
    const Probe* probe = probeFor(expected.at, true, expected.signal, nullptr);
    return probe != nullptr ? std::optional(probe->value) : std::nullopt;
  }

  [[nodiscard]] std::optional<Point> positionAt(const scenario::ExpectPosition& expected) const {
    const MotionObject* object = m_objects.find(expected.object.c_str());
    if (expected.at.end) {
      return object->pose();
    }
    const Probe* probe = probeFor(expected.at, false, 0, object);
    return probe != nullptr ? std::optional(probe->position) : std::nullopt;
  }

  [[nodiscard]] static std::string notReached(const scenario::Moment& at) {
    return fmt::format("the run ended before {} s", at.time);
  }

  template <typename COMPARE>
  [[nodiscard]] std::string compareStarts(const std::vector<CommandRef>& refs, COMPARE compare) const {
    bool holds = true;
    std::vector<std::string> starts;
    std::uint64_t before = 0;
    for (std::size_t i = 0; i < refs.size(); ++i) {
      const std::uint64_t start = find(refs[i]).active;
      holds = holds && start != 0 && (i == 0 || compare(before, start));
      before = start;
      starts.push_back(start != 0 ? fmt::format("{} started in cycle {}", refText(refs[i]), start)
                                  : fmt::format("{} did not start", refText(refs[i])));
    }
    return holds ? "" : fmt::format("{}", fmt::join(starts, ", "));
  }

  [[nodiscard]] const CmdRecord& find(const CommandRef& ref) const {
    const auto object = std::ranges::find(m_record.objects, ref.object, &observe::ObjectRecord::name);
    return object->commands.at(ref.number - 1);
  }

  const scenario::Scenario& m_scenario;
  const std::vector<Probe>& m_probes;
  const ObjMgr& m_objects;
  const observe::SignalWatch& m_finalSignals;
  const observe::RunRecord& m_record;
};

bool expectsFailure(const scenario::Scenario& scenario, const std::string& object, std::size_t number) {
  return std::ranges::any_of(scenario.expectations, [&](const scenario::Expectation& expectation) {
    const auto* state = std::get_if<scenario::ExpectState>(&expectation.what);
    return state != nullptr && state->state == "failed" && state->command.object == object &&
           state->command.number == number;
  });
}

}  // namespace

std::uint64_t firstCycleFrom(double time, double cycleTime) {
  return static_cast<std::uint64_t>(std::max(0.0, wholeCycles(time, cycleTime))) + 1;
}

std::vector<Probe> probesFor(const scenario::Scenario& scenario, const ObjMgr& objects) {
  std::vector<Probe> probes;
  for (const scenario::Expectation& expectation : scenario.expectations) {
    Probe probe;
    scenario::Moment at;
    if (const auto* signal = std::get_if<scenario::ExpectSignal>(&expectation.what)) {
      at = signal->at;
      probe.signal = signal->signal;
    } else if (const auto* position = std::get_if<scenario::ExpectPosition>(&expectation.what)) {
      at = position->at;
      probe.isSignal = false;
      probe.object = objects.find(position->object.c_str());
    }
    if (!at.end) {
      probe.cycle = firstCycleFrom(at.time, scenario.cycleTime);
      probes.push_back(probe);
    }
  }
  std::ranges::stable_sort(probes, {}, &Probe::cycle);
  return probes;
}

void judge(const scenario::Scenario& scenario, const std::vector<Probe>& probes, const ObjMgr& objects,
           const observe::SignalWatch& finalSignals, observe::RunRecord& record) {
  Judge verdict(scenario, probes, objects, finalSignals, record);
  for (const scenario::Expectation& expectation : scenario.expectations) {
    std::string reason = std::visit(verdict, expectation.what);
    record.expectations.push_back({expectation.text, expectation.mark.line, reason.empty(), std::move(reason)});
  }
  for (const observe::ObjectRecord& object : record.objects) {
    for (const CmdRecord& command : object.commands) {
      if (command.state == CmdState::FAILED && !expectsFailure(scenario, object.name, command.number)) {
        record.failures.push_back(fmt::format("{}#{} {}: {}", object.name, command.number, command.name, command.failure));
      }
    }
  }
}

}  // namespace motion::host::run
