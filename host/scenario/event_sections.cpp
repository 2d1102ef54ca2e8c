// The parts of a scenario file about what happens around the programs: outside events and expectations.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <unordered_set>
#include <utility>

#include "host/scenario/numbers.h"
#include "host/scenario/scenario_sections.h"
#include "host/scenario/words.h"

namespace motion::host::scenario {
namespace {

constexpr double DEFAULT_TOLERANCE = 1e-6;  // [m]
constexpr std::array<std::string_view, 4> STATES{"done", "aborted", "failed", "active"};

std::vector<ScopeName> readScopes(const Value& value, Reading& reading) {
  std::vector<ScopeName> scopes;
  if (isKindOrEmpty(value, Value::Kind::LIST, "scopes", reading.problems)) {
    for (const Value& item : value.items) {
      if (const std::string* name = readWord(item, "scopes", reading.problems)) {
        scopes.push_back({*name, item.mark});
      }
    }
  }
  return scopes;
}

void readOutsideSignal(const MapReader& map, OutsideEvent& event, Reading& reading) {
  event.kind = OutsideEvent::Kind::SIGNAL;
  event.signal = readSignal(*map.find("signal"), "signal", reading).value_or(0);
  if (const Value* value = map.require("value")) {
    event.value = readBool(*value, "value", reading.problems).value_or(false);
  }
  if (const Value* scopes = map.find("scopes"); scopes != nullptr) {
    event.scopes = readScopes(*scopes, reading);
  }
  if (const Value* refused = map.find("refused"); refused != nullptr) {
    event.refused = readBool(*refused, "refused", reading.problems).value_or(false);
  }
}

void readOutsideEvent(const Value& value, Reading& reading) {
  if (!isKind(value, Value::Kind::MAP, "outside event", reading.problems)) {
    return;
  }
  const MapReader map(value, "outside event", {"at", "signal", "value", "scopes", "refused", "abort"}, reading.problems);
  OutsideEvent event;
  event.mark = value.mark;
  if (const Value* at = map.require("at")) {
    event.at = readTime(*at, "at", reading.problems).value_or(0.0);
    checkWithinLimit(*at, event.at, reading);
  }
  const Value* abort = map.find("abort");
  if (map.find("signal") != nullptr && abort == nullptr) {
    readOutsideSignal(map, event, reading);
  } else if (abort != nullptr && map.find("signal") == nullptr) {
    event.kind = OutsideEvent::Kind::ABORT;
    const std::string* object = readObjectName(*abort, "abort", reading);
    event.object = object != nullptr ? *object : std::string();
    for (const char* key : {"value", "scopes", "refused"}) {
      if (const Value* superfluous = map.find(key)) {
        reading.problems.error(superfluous->key, fmt::format("outside event: '{}' does not go with 'abort'", key));
      }
    }
  } else {
    reading.problems.error(value.mark, "outside event: expected either 'signal' or 'abort'",
                           "as in '{at: 0.5 s, signal: 7, value: true}' or '{at: 0.7 s, abort: Feeder}'");
  }
  reading.scenario.outside.push_back(std::move(event));
}

// A moment that is not given is the end.
Moment readMoment(const MapReader& map, Reading& reading) {
  Moment moment;
  const Value* at = map.find("at");
  if (at == nullptr || (at->kind == Value::Kind::SCALAR && at->text == "end")) {
    return moment;
  }
  moment.end = false;
  moment.time = readTime(*at, "at", reading.problems).value_or(0.0);
  checkWithinLimit(*at, moment.time, reading);
  return moment;
}

ExpectSignal readExpectSignal(const Value& value, Reading& reading) {
  const MapReader map(value, "expectation of a signal", {"at", "signal", "value"}, reading.problems);
  ExpectSignal expect;
  expect.at = readMoment(map, reading);
  expect.signal = readSignal(*map.find("signal"), "signal", reading).value_or(0);
  if (const Value* field = map.require("value")) {
    expect.value = readBool(*field, "value", reading.problems).value_or(false);
  }
  return expect;
}

ExpectPosition readExpectPosition(const Value& value, Reading& reading) {
  const MapReader map(value, "expectation of a position", {"at", "object", "position", "within"}, reading.problems);
  ExpectPosition expect;
  expect.at = readMoment(map, reading);
  core::ObjectType type = core::ObjectType::UNDEFINED;
  if (const std::string* object = readObjectName(*map.find("object"), "object", reading)) {
    expect.object = *object;
    type = reading.objects.at(*object);
  }
  if (const Value* position = map.require("position")) {
    expect.position = readPosition(*position, "position", type, reading.problems);
  }
  expect.tolerance = DEFAULT_TOLERANCE;
  if (const Value* within = map.find("within")) {
    expect.tolerance = readLength(*within, "within", reading.problems).value_or(DEFAULT_TOLERANCE);
    if (expect.tolerance < 0.0) {
      reading.problems.error(within->mark, fmt::format("within: {} is negative", inQuotes(within->text)));
    }
  }
  return expect;
}

// "Feeder#4"; an object's name holds no '#'.
std::optional<CommandRef> readCommandRef(const Value& value, std::string_view what, Reading& reading) {
  const std::string* text = readWord(value, what, reading.problems);
  if (text == nullptr) {
    return std::nullopt;
  }
  const std::size_t separator = text->rfind('#');
  const std::string object = text->substr(0, separator);
  const std::string digits = separator != std::string::npos ? text->substr(separator + 1) : std::string();
  const bool isNumber = !digits.empty() && digits.find_first_not_of("0123456789") == std::string::npos;
  if (object.empty() || !isNumber) {
    reading.problems.error(value.mark, fmt::format("{}: {} names no command", what, inQuotes(*text)),
                           "write object#number, as in 'Feeder#4'");
    return std::nullopt;
  }
  if (!reading.objects.contains(object)) {
    reportUnknownObject(value.mark, what, object, reading);
    return std::nullopt;
  }
  const auto number = parseNumber<std::size_t>(digits);
  const auto program = reading.programLengths.find(object);
  const std::size_t length = program != reading.programLengths.end() ? program->second : 0;
  if (number.fault != NumberFault::NONE || number.value == 0 || number.value > length) {
    reading.problems.error(value.mark, fmt::format("{}: there is no command {}", what, inQuotes(*text)),
                           length > 0 ? fmt::format("the program of {} has the commands 1 to {}", inQuotes(object), length)
                                      : fmt::format("the program of {} has no commands", inQuotes(object)));
    return std::nullopt;
  }
  return CommandRef{object, number.value, value.mark};
}

std::vector<CommandRef> readCommandRefs(const Value& value, const std::string& key, Reading& reading) {
  std::vector<CommandRef> commands;
  const MapReader map(value, fmt::format("expectation {}", inQuotes(key)), {key}, reading.problems);
  const Value& list = *map.find(key);
  if (!isKind(list, Value::Kind::LIST, key, reading.problems)) {
    return commands;
  }
  if (list.items.size() < 2) {
    reading.problems.error(list.mark, fmt::format("{}: expected at least two commands", key), "as in '[Feeder#4, Robot#4]'");
  }
  std::unordered_set<std::string> seen;
  for (const Value& item : list.items) {
    if (auto command = readCommandRef(item, key, reading)) {
      if (!seen.insert(fmt::format("{}#{}", command->object, command->number)).second) {
        reading.problems.error(item.mark, fmt::format("{}: {} stands twice", key, inQuotes(item.text)));
      }
      commands.push_back(std::move(*command));
    }
  }
  return commands;
}

ExpectState readExpectState(const Value& value, Reading& reading) {
  const MapReader map(value, "expectation of a state", {"command", "state"}, reading.problems);
  ExpectState expect;
  expect.command = readCommandRef(*map.find("command"), "command", reading).value_or(CommandRef{});
  const Value* field = map.require("state");
  const std::string* state = field != nullptr ? readWord(*field, "state", reading.problems) : nullptr;
  if (state != nullptr && std::find(STATES.begin(), STATES.end(), *state) == STATES.end()) {
    reading.problems.unknownWord(field->mark, fmt::format("state: unknown state {}", inQuotes(*state)), *state, STATES);
  }
  expect.state = state != nullptr ? *state : std::string();
  return expect;
}

// A key that is nearly right says more than that none is.
void reportMissingExpectation(const Value& value, Reading& reading) {
  constexpr std::array<std::string_view, 10> KEYS{"at",     "signal", "value",      "object",  "position",
                                                  "within", "order",  "same cycle", "command", "state"};
  bool unknown = false;
  for (const auto& [key, field] : value.fields) {
    if (std::find(KEYS.begin(), KEYS.end(), key) == KEYS.end()) {
      reading.problems.unknownWord(field.key, fmt::format("expectation: unknown key {}", inQuotes(key)), key, KEYS);
      unknown = true;
    }
  }
  if (!unknown) {
    reading.problems.error(value.mark, "expectation: it does not say what is expected",
                           "write one of the keys signal, object, same cycle, order, command");
  }
}

void readExpectation(const Value& value, Reading& reading) {
  if (!isKind(value, Value::Kind::MAP, "expectation", reading.problems)) {
    return;
  }
  const auto has = [&](std::string_view key) {
    return std::any_of(value.fields.begin(), value.fields.end(), [&](const auto& field) { return field.key == key; });
  };
  Expectation expectation{{}, inOneLine(value), value.mark};
  if (has("signal")) {
    expectation.what = readExpectSignal(value, reading);
  } else if (has("object")) {
    expectation.what = readExpectPosition(value, reading);
  } else if (has("same cycle")) {
    expectation.what = ExpectSameCycle{readCommandRefs(value, "same cycle", reading)};
  } else if (has("order")) {
    expectation.what = ExpectOrder{readCommandRefs(value, "order", reading)};
  } else if (has("command")) {
    expectation.what = readExpectState(value, reading);
  } else {
    reportMissingExpectation(value, reading);
    return;
  }
  reading.scenario.expectations.push_back(std::move(expectation));
}

}  // namespace

void readOutside(const MapReader& file, Reading& reading) {
  const Value* outside = file.find("outside");
  if (outside == nullptr || !isKindOrEmpty(*outside, Value::Kind::LIST, "outside", reading.problems)) {
    return;
  }
  for (const Value& value : outside->items) {
    readOutsideEvent(value, reading);
  }
}

void readExpectations(const MapReader& file, Reading& reading) {
  const Value* expect = file.find("expect");
  if (expect == nullptr || !isKindOrEmpty(*expect, Value::Kind::LIST, "expect", reading.problems)) {
    return;
  }
  for (const Value& value : expect->items) {
    readExpectation(value, reading);
  }
}

}  // namespace motion::host::scenario
