#include "host/run/program.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>

#include "host/scenario/parameter_encoder.h"
#include "host/scenario/words.h"
#include "motion/kavo/cmd_groups.h"

namespace motion::host::run {

using scenario::CommandCall;
using scenario::Problem;
using scenario::Value;

namespace {

const Value* fieldOf(const Value& map, std::string_view name) {
  const auto found = std::ranges::find(map.fields, name, &std::pair<std::string, Value>::first);
  return found != map.fields.end() ? &found->second : nullptr;
}

/// The signal that a command names, if it names one.
std::optional<std::uint32_t> signalOf(const Value& parameters) {
  const Value* field = fieldOf(parameters, "signalId");
  std::uint32_t signal = 0;
  if (field == nullptr) {
    return std::nullopt;
  }
  const char* end = field->text.data() + field->text.size();
  const auto [rest, error] = std::from_chars(field->text.data(), end, signal);
  return error == std::errc() && rest == end ? std::optional(signal) : std::nullopt;
}

/// True for commands that have no work of their own but wait for others.
bool isSynchronising(const CmdEntry& entry) {
  return std::ranges::any_of(entry.groups, [](const std::string& group) {
    return group == kavo::GROUP_SYNC_ON_SIGNAL || group == kavo::GROUP_JOIN_CMD;
  });
}

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
      problem(call.options.front().mark, fmt::format("option {} is not known", scenario::inQuotes(call.options.front().name)),
              "no option can be used with this bundle");
      return;
    }
    auto encoded = scenario::encodeParameters(entry->schema, call.parameters, call.name, call.mark, m_scenario.file);
    m_result.problems.insert(m_result.problems.end(), encoded.problems.begin(), encoded.problems.end());
    if (!encoded.data) {
      return;
    }
    ProgramCall ready{call.name, std::move(*encoded.data), {"scenario", m_scenario.file, static_cast<std::uint32_t>(call.mark.line)},
                      describe(*entry, call)};
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
            fmt::format("{} is not a command of {} '{}'", scenario::inQuotes(call.name), object.isAxis() ? "axis" : "kinematics",
                        object.name()),
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

  observe::CmdDescription describe(const CmdEntry& entry, const CommandCall& call) const {
    observe::CmdDescription description;
    description.name = call.name;
    description.parameters = valueText(call.parameters);
    description.line = call.mark.line;
    description.waits = isSynchronising(entry);
    if (const auto signal = signalOf(call.parameters); signal && description.waits) {
      description.signal = signal;
      description.waitsFor = fmt::format("signal {}", *signal);
      for (const scenario::SignalName& named : m_scenario.signals) {
        if (named.id == *signal) {
          description.waitsFor += fmt::format(" '{}'", named.name);
        }
      }
    }
    return description;
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
