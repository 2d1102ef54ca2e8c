// The programs of a scenario file: which commands each object is given, with their parameters and options as they stand.
#include <fmt/format.h>

#include <algorithm>
#include <optional>
#include <utility>
#include <vector>

#include "host/scenario/scenario_sections.h"
#include "host/scenario/words.h"

namespace motion::host::scenario {
namespace {

constexpr std::string_view OPTIONS = "options";

// A command or option as written: its name, and its parameters as a map that may be empty.
struct Call {
  std::string name;
  Value parameters;
  Mark mark;
};

// `Name`, `Name:` or `Name: {...}`.
std::optional<Call> readCall(const Value& value, std::string_view what, Reading& reading) {
  Call call;
  call.mark = value.mark;
  call.parameters.kind = Value::Kind::MAP;
  call.parameters.mark = value.mark;
  if (value.kind == Value::Kind::SCALAR && !value.text.empty()) {
    call.name = value.text;
    return call;
  }
  if (value.kind != Value::Kind::MAP || value.fields.empty()) {
    reportUnexpected(value, what, "a name and its parameters", reading.problems, "as in 'Dwell: {time: 0.2}'");
    return std::nullopt;
  }
  if (value.fields.size() > 1) {
    reading.problems.error(value.fields[1].value.key,
                           fmt::format("{}: {} follows {} in the same entry", what, inQuotes(value.fields[1].key),
                                       inQuotes(value.fields[0].key)),
                           "begin each entry with '-'; parameters stand in braces or are indented further");
    return std::nullopt;
  }
  const auto& [name, parameters] = value.fields.front();
  call.name = name;
  call.mark = parameters.key;
  if (parameters.kind == Value::Kind::EMPTY) {
    return call;
  }
  if (parameters.kind != Value::Kind::MAP) {
    reportUnexpected(parameters, inQuotes(name), "a map of parameters", reading.problems, "as in 'Dwell: {time: 0.2}'");
    return std::nullopt;
  }
  call.parameters = parameters;
  return call;
}

// Options stand among the parameters of the command that they accompany.
std::vector<OptionCall> takeOptions(Value& parameters, Reading& reading) {
  std::vector<OptionCall> options;
  const auto field = std::find_if(parameters.fields.begin(), parameters.fields.end(),
                                  [](const auto& candidate) { return candidate.key == OPTIONS; });
  if (field == parameters.fields.end()) {
    return options;
  }
  if (isKindOrEmpty(field->value, Value::Kind::LIST, OPTIONS, reading.problems)) {
    for (const Value& item : field->value.items) {
      if (auto call = readCall(item, "option", reading)) {
        options.push_back({std::move(call->name), std::move(call->parameters), call->mark});
      }
    }
  }
  parameters.fields.erase(field);
  return options;
}

ObjectProgram readProgram(const std::string& object, const Value& value, Reading& reading) {
  ObjectProgram program;
  program.object = object;
  program.mark = value.key;
  if (!isKindOrEmpty(value, Value::Kind::LIST, fmt::format("program of {}", inQuotes(object)), reading.problems)) {
    return program;
  }
  for (const Value& entry : value.items) {
    if (auto call = readCall(entry, "command", reading)) {
      auto options = takeOptions(call->parameters, reading);
      program.commands.push_back({std::move(call->name), std::move(call->parameters), std::move(options), call->mark});
    }
  }
  return program;
}

}  // namespace

void readPrograms(const MapReader& file, Reading& reading) {
  const Value* programs = file.find("program");
  if (programs == nullptr || !isKindOrEmpty(*programs, Value::Kind::MAP, "program", reading.problems)) {
    return;
  }
  for (const auto& [object, value] : programs->fields) {
    if (!reading.objects.contains(object)) {
      reportUnknownObject(value.key, "program", object, reading);
    }
    // Faulty entries count too, so that they do not make right references wrong.
    reading.programLengths[object] = value.items.size();
    reading.scenario.programs.push_back(readProgram(object, value, reading));
  }
}

}  // namespace motion::host::scenario
