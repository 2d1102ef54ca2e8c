#include "host/run/program.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "host/run/sync_steps.h"
#include "host/scenario/parameter_encoder.h"
#include "host/scenario/words.h"

namespace motion::host::run {

using scenario::CommandCall;
using scenario::Problem;
using scenario::Value;

namespace {

class Preparer {
 public:
  Preparer(const scenario::Scenario& scenario, Runtime& runtime, const TakeMessages& takeMessages)
      : m_scenario(scenario), m_runtime(runtime), m_takeMessages(takeMessages) {}

  ProgramResult prepare() {
    for (const scenario::ObjectProgram& program : m_scenario.programs) {
      ObjectCalls calls;
      calls.object = m_runtime.objMgr().find(program.object.c_str());
      for (const CommandCall& call : program.commands) {
        prepareCall(*calls.object, call, calls.calls);
      }
      m_result.programs.push_back(std::move(calls));
    }
    return std::move(m_result);
  }

 private:
  void prepareCall(MotionObject& object, const CommandCall& call, std::vector<ProgramCall>& calls) {
    const auto entry = m_runtime.cmdFactory().find({object.type(), call.name});
    if (entry == nullptr) {
      unknownCommand(object, call);
      return;
    }
    if (!call.options.empty()) {
      problem(call.options.front().mark,
              fmt::format("option {} is not known", scenario::inQuotes(call.options.front().name)),
              "no option can be used with this bundle");
      return;
    }
    auto encoded = scenario::encodeParameters(entry->schema, call.parameters, call.name, call.mark, m_scenario.file);
    m_result.problems.insert(m_result.problems.end(), encoded.problems.begin(), encoded.problems.end());
    if (!encoded.data) {
      return;
    }
    const observe::SyncStep sync = syncStepOf(*entry, call.parameters, object, m_runtime.objMgr());
    if (sync.kind == observe::SyncKind::JOINS && sync.group.size() == 1 && !isGroupEmpty(call.parameters)) {
      problem(call.mark, fmt::format("'{}' of '{}' names nobody but '{}' itself", call.name, object.name(), object.name()),
              "name in 'group' the objects to join with");
      return;
    }
    ProgramCall ready{call.name,
                      std::move(*encoded.data),
                      {"scenario", m_scenario.file, static_cast<std::uint32_t>(call.mark.line)},
                      describe(object, call, sync),
                      call.mark};
    if (tryOut(object, call, ready)) {
      calls.push_back(std::move(ready));
    }
  }

  void unknownCommand(MotionObject& object, const CommandCall& call) {
    std::vector<std::string> names;
    for (const auto& entry : m_runtime.cmdFactory().all()) {
      if (entry->id.objectType == object.type() && entry->visible) {
        names.push_back(entry->id.name);
      }
    }
    const std::vector<std::string_view> views(names.begin(), names.end());
    problem(call.mark,
            fmt::format("{} is not a command of {} '{}'", scenario::inQuotes(call.name),
                        object.isAxis() ? "axis" : "kinematics", object.name()),
            scenario::knownWords(call.name, views));
  }

  bool tryOut(MotionObject& object, const CommandCall& call, const ProgramCall& ready) {
    static_cast<void>(m_takeMessages());
    std::string refusal;
    if (!core::isFailure(m_runtime.tryOut(object, ready.name, ready.parameters, ready.source, refusal))) {
      return true;
    }
    const std::vector<std::string> said = m_takeMessages();
    problem(call.mark, refusal, said.empty() ? "" : fmt::format("the component says: {}", fmt::join(said, "; ")));
    return false;
  }

  [[nodiscard]] observe::CmdDescription describe(const MotionObject& object, const CommandCall& call,
                                                 const observe::SyncStep& sync) const {
    observe::CmdDescription description;
    description.name = call.name;
    description.parameters = valueText(call.parameters);
    description.line = call.mark.line;
    description.sync = sync;
    description.waits = observe::isWait(sync.kind);
    if (sync.kind == observe::SyncKind::JOINS) {
      description.waitsFor = partnersText(object, sync);
    } else if (description.waits) {
      description.signal = sync.signal;
      description.waitsFor = signalText(sync.signal);
    }
    return description;
  }

  [[nodiscard]] std::string signalText(std::uint32_t signal) const {
    const auto named = std::ranges::find(m_scenario.signals, signal, &scenario::SignalName::id);
    return named != m_scenario.signals.end() ? fmt::format("signal {} '{}'", signal, named->name)
                                             : fmt::format("signal {}", signal);
  }

  [[nodiscard]] std::string partnersText(const MotionObject& object, const observe::SyncStep& join) const {
    std::vector<std::string_view> names;
    for (const std::uint32_t member : join.group) {
      if (member != object.index()) {
        names.push_back(m_runtime.objMgr().objects()[member]->name());
      }
    }
    return fmt::format("{}", fmt::join(names, ", "));
  }

  void problem(const scenario::Mark& mark, std::string message, std::string remedy) {
    m_result.problems.push_back({m_scenario.file, mark, std::move(message), std::move(remedy), false});
  }

  const scenario::Scenario& m_scenario;
  Runtime& m_runtime;
  const TakeMessages& m_takeMessages;
  ProgramResult m_result;
};

}  // namespace

ProgramResult prepareProgram(const scenario::Scenario& scenario, Runtime& runtime, const TakeMessages& takeMessages) {
  return Preparer(scenario, runtime, takeMessages).prepare();
}

std::string valueText(const Value& value) {
  std::vector<std::string> parts;
  switch (value.kind) {
    case Value::Kind::EMPTY:
      return "";
    case Value::Kind::SCALAR:
      return value.text;
    case Value::Kind::LIST:
      std::ranges::transform(value.items, std::back_inserter(parts), valueText);
      return fmt::format("[{}]", fmt::join(parts, ", "));
    case Value::Kind::MAP:
      std::ranges::transform(value.fields, std::back_inserter(parts),
                             [](const auto& field) { return fmt::format("{}: {}", field.first, valueText(field.second)); });
      return parts.empty() ? "" : fmt::format("{{{}}}", fmt::join(parts, ", "));
  }
  return "";
}

}  // namespace motion::host::run
