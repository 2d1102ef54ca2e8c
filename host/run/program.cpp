#include "host/run/program.h"

#include <fmt/format.h>

#include <algorithm>
#include <string_view>

#include "host/motion/unit_helper.h"
#include "host/run/sync_steps.h"
#include "host/scenario/parameter_encoder.h"
#include "host/scenario/parameter_reader.h"
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
      m_runtime.preparation().forgetTriedPaths(*calls.object);
      ProgramOptions options(m_runtime, *calls.object, m_scenario.file);
      for (const CommandCall& call : program.commands) {
        prepareCall(*calls.object, call, options, calls.calls);
      }
      m_runtime.preparation().forgetTriedPaths(*calls.object);
      m_result.programs.push_back(std::move(calls));
    }
    return std::move(m_result);
  }

 private:
  void prepareCall(MotionObject& object, const CommandCall& call, ProgramOptions& options, std::vector<ProgramCall>& calls) {
    const auto entry = m_runtime.cmdFactory().find({object.type(), call.name});
    if (entry == nullptr) {
      unknownCommand(object, call);
      return;
    }
    auto encoded = scenario::encodeParameters(entry->schema, call.parameters, call.name, call.mark, m_scenario.file);
    m_result.problems.insert(m_result.problems.end(), encoded.problems.begin(), encoded.problems.end());
    const std::vector<ReadyOption> given = options.encode(call, *entry, m_result.problems);
    if (!encoded.data || given.size() != call.options.size()) {
      return;
    }
    options.follow(given, *entry);
    observe::SyncStep sync = syncStepOf(*entry, call.parameters, object, m_runtime.objMgr());
    if (sync.kind == observe::SyncKind::JOINS && namesOnlyItself(call.parameters, object.name())) {
      problem(call.mark, fmt::format("'{}' of '{}' names nobody but '{}' itself", call.name, object.name(), object.name()),
              "name in 'group' the objects to join with");
      return;
    }
    sync.options = options.effects();
    ProgramCall ready;
    ready.name = call.name;
    ready.parameters = std::move(*encoded.data);
    ready.source = {"scenario", m_scenario.file, static_cast<std::uint32_t>(call.mark.line)};
    ready.description = describe(object, call, sync);
    ready.mark = call.mark;
    ready.velocity = velocityOf(object, *entry, ready.parameters);
    ready.conditions = options.conditions();
    for (const ReadyOption& option : given) {
      ready.options.push_back(option.encoded);
      ready.description.options.push_back(option.text);
    }
    if (tryOut(object, call, ready)) {
      calls.push_back(std::move(ready));
    }
  }

  [[nodiscard]] static double velocityOf(const MotionObject& object, const CmdEntry& entry,
                                         const comm::datalayer::Variant& parameters) {
    const double velocity = scenario::ParameterReader(entry.schema, parameters).number("velocity").value_or(0.0);
    return UnitHelper().toInternal(object.getUnitSettings(), core::UnitEntry::VELOCITY, velocity);
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
    if (!core::isFailure(m_runtime.tryOut(object, ready.encoded(), refusal))) {
      return true;
    }
    const std::vector<std::string> said = m_takeMessages();
    problem(markOf(call, refusal), refusal,
            said.empty() ? "" : fmt::format("the component says: {}", fmt::join(said, "; ")));
    return false;
  }

  /// Where the option stands that a refusal names, if it does so beyond doubt; else where the command stands.
  [[nodiscard]] static const scenario::Mark& markOf(const CommandCall& call, const std::string& refusal) {
    const auto isNamed = [&refusal](const scenario::OptionCall& option) {
      return refusal.find(fmt::format("option '{}'", option.name)) != std::string::npos;
    };
    const auto found = std::ranges::find_if(call.options, isNamed);
    return std::ranges::count_if(call.options, isNamed) == 1 ? found->mark : call.mark;
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
                             [](const auto& field) { return fmt::format("{}: {}", field.key, valueText(field.value)); });
      return parts.empty() ? "" : fmt::format("{{{}}}", fmt::join(parts, ", "));
  }
  return "";
}

}  // namespace motion::host::run
