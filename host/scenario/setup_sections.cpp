// The parts of a scenario file that set the stage: timing, signals, objects.
#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <iterator>
#include <utility>
#include <vector>

#include "host/scenario/numbers.h"
#include "host/scenario/scenario_sections.h"
#include "host/scenario/words.h"
#include "motion/kavo/signal_memory.h"

namespace motion::host::scenario {
namespace {

constexpr double SHORTEST_CYCLE = 50e-6;  // [s]
constexpr double LONGEST_CYCLE = 1.0;     // [s]
constexpr double LONGEST_LIMIT = 1e6;     // [s], keeps the number of cycles countable
constexpr std::uint32_t LARGEST_BUFFER = 1000;
constexpr std::uint32_t LAST_SIGNAL = kavo::SIGNAL_COUNT - 1;

void readSignalName(const std::string& key, const Value& value, Reading& reading) {
  const auto number = parseNumber<std::uint32_t>(key);
  if (number.fault != NumberFault::NONE || number.value > LAST_SIGNAL) {
    reading.problems.error(
        value.key, fmt::format("signals: expected a whole number from 0 to {}, found {}", LAST_SIGNAL, inQuotes(key)),
        "write number: name, as in '5: part in place'");
    return;
  }
  const std::string what = fmt::format("signals: name of {}", number.value);
  const std::string* name = readWord(value, what, reading.problems);
  if (name == nullptr) {
    return;
  }
  if (parseNumber<std::int64_t>(*name).fault != NumberFault::MALFORMED) {
    reportUnexpected(value, what, "a word", reading.problems,
                     "a number as a name would be taken for the number of a signal");
    return;
  }
  auto& signals = reading.scenario.signals;
  if (std::any_of(signals.begin(), signals.end(), [&](const SignalName& other) { return other.id == number.value; })) {
    reading.problems.error(value.key, fmt::format("signals: {} stands twice", number.value));
    return;
  }
  signals.push_back({number.value, *name});
  reading.signalsByName.emplace(*name, number.value);
}

// What makes a name unusable; empty if nothing does. '#' and ',' separate names in references and lists.
std::string faultOfName(const std::string& name) {
  const auto isControl = [](char c) { return static_cast<unsigned char>(c) < 0x20 || c == 0x7F; };
  const auto isSpace = [](char c) { return c == ' ' || c == '\t'; };
  if (std::any_of(name.begin(), name.end(), isControl)) {
    return "holds a control character";
  }
  if (isSpace(name.front()) || isSpace(name.back())) {
    return "begins or ends with a space";
  }
  const std::size_t separator = name.find_first_of("#,");
  return separator != std::string::npos ? fmt::format("holds the character '{}'", name[separator]) : std::string();
}

void readName(const MapReader& map, ObjectDef& object, Reading& reading) {
  const Value* value = map.require("name");
  const std::string* name = value != nullptr ? readWord(*value, "object: name", reading.problems) : nullptr;
  if (name == nullptr) {
    return;
  }
  const std::string fault = faultOfName(*name);
  if (!fault.empty()) {
    reading.problems.error(value->mark, fmt::format("object: the name {} {}", inQuotes(*name), fault),
                           "names hold no '#', no ',', no control characters and no space at either end");
    return;
  }
  object.name = *name;
}

void readType(const MapReader& map, ObjectDef& object, Reading& reading) {
  const Value* value = map.require("type");
  const std::string* type = value != nullptr ? readWord(*value, "object: type", reading.problems) : nullptr;
  object.type = core::ObjectType::UNDEFINED;
  if (type == nullptr) {
    return;
  }
  if (*type == "axis") {
    object.type = core::ObjectType::AXIS;
  } else if (*type == "kinematics") {
    object.type = core::ObjectType::KINEMATICS;
  } else {
    constexpr std::array<std::string_view, 2> TYPES{"axis", "kinematics"};
    reading.problems.unknownWord(value->mark, fmt::format("object: unknown type {}", inQuotes(*type)), *type, TYPES);
  }
}

/// One of a few words; `chosen` stays as it is when there is none or a wrong one.
template <typename UNIT, std::size_t COUNT>
void readUnit(const MapReader& map, const char* key, const std::array<std::string_view, COUNT>& words, UNIT& chosen,
              Reading& reading) {
  const Value* value = map.find(key);
  const std::string* word = value != nullptr ? readWord(*value, fmt::format("units: {}", key), reading.problems) : nullptr;
  if (word == nullptr) {
    return;
  }
  const auto found = std::find(words.begin(), words.end(), *word);
  if (found == words.end()) {
    reading.problems.unknownWord(value->mark, fmt::format("units: unknown unit of {} {}", key, inQuotes(*word)), *word,
                                 words);
    return;
  }
  chosen = static_cast<UNIT>(found - words.begin());
}

void readUnits(const Value& value, ObjectDef& object, Reading& reading) {
  if (!isKind(value, Value::Kind::MAP, "units", reading.problems)) {
    return;
  }
  const MapReader map(value, "units", {"length", "time"}, reading.problems);
  readUnit(map, "length", LENGTH_UNITS, object.lengthUnit, reading);
  readUnit(map, "time", TIME_UNITS, object.timeUnit, reading);
}

void readObject(const Value& value, Reading& reading) {
  if (!isKind(value, Value::Kind::MAP, "object", reading.problems)) {
    return;
  }
  const MapReader map(value, "object", {"name", "type", "at", "units"}, reading.problems);
  ObjectDef object;
  object.mark = value.mark;
  readName(map, object, reading);
  readType(map, object, reading);
  if (const Value* start = map.find("at")) {
    object.start = readPosition(*start, "object: at", object.type, reading.problems);
  }
  if (const Value* units = map.find("units")) {
    readUnits(*units, object, reading);
  }
  if (!object.name.empty() && !reading.objects.emplace(object.name, object.type).second) {
    reading.problems.error(map.find("name")->mark, fmt::format("object: the name {} stands twice", inQuotes(object.name)));
  }
  reading.scenario.objects.push_back(std::move(object));
}

}  // namespace

void readTiming(const MapReader& file, Reading& reading) {
  Scenario& scenario = reading.scenario;
  const Value* cycle = file.find("cycle");
  if (cycle != nullptr) {
    scenario.cycleTime = readTime(*cycle, "cycle", reading.problems).value_or(scenario.cycleTime);
    if (scenario.cycleTime < SHORTEST_CYCLE || scenario.cycleTime > LONGEST_CYCLE) {
      reading.problems.error(cycle->mark, fmt::format("cycle: {} is out of range", inQuotes(cycle->text)),
                             "a cycle takes at least 50 us and at most 1 s");
    }
  }
  if (const Value* limit = file.find("limit")) {
    scenario.limit = readTime(*limit, "limit", reading.problems).value_or(scenario.limit);
    if (scenario.limit > LONGEST_LIMIT) {
      reading.problems.error(limit->mark, fmt::format("limit: {} is out of range", inQuotes(limit->text)),
                             "a run takes at most 1000000 s");
    } else if (scenario.limit < scenario.cycleTime) {
      reading.problems.error(limit->mark, fmt::format("limit: {} is shorter than one cycle", inQuotes(limit->text)));
    }
  }
  if (const Value* buffer = file.find("buffer")) {
    scenario.bufferSize = readInteger(*buffer, "buffer", 1, LARGEST_BUFFER, reading.problems).value_or(scenario.bufferSize);
  }
}

void readSignalNames(const MapReader& file, Reading& reading) {
  const Value* signals = file.find("signals");
  if (signals == nullptr || !isKindOrEmpty(*signals, Value::Kind::MAP, "signals", reading.problems)) {
    return;
  }
  for (const auto& [key, value] : signals->fields) {
    readSignalName(key, value, reading);
  }
}

void readObjects(const MapReader& file, Reading& reading) {
  const Value* objects = file.require("objects");
  if (objects == nullptr || !isKindOrEmpty(*objects, Value::Kind::LIST, "objects", reading.problems)) {
    return;
  }
  if (objects->items.empty()) {
    reading.problems.error(objects->mark, "objects: there are none", "as in '- {name: Feeder, type: axis}'");
  }
  for (const Value& value : objects->items) {
    readObject(value, reading);
  }
}

std::optional<std::uint32_t> readSignal(const Value& value, std::string_view what, Reading& reading) {
  const bool isWord = value.kind == Value::Kind::SCALAR && !value.text.empty();
  if (!isWord || (!value.quoted && parseNumber<std::int64_t>(value.text).fault != NumberFault::MALFORMED)) {
    return readInteger(value, what, 0, LAST_SIGNAL, reading.problems);
  }
  const auto [first, last] = reading.signalsByName.equal_range(value.text);
  if (first == last) {
    std::vector<std::string_view> names;
    for (const SignalName& signal : reading.scenario.signals) {
      names.push_back(signal.name);
    }
    reading.problems.unknownWord(value.mark, fmt::format("{}: unknown signal {}", what, inQuotes(value.text)), value.text,
                                 names);
    return std::nullopt;
  }
  if (std::next(first) != last) {
    reading.problems.error(value.mark, fmt::format("{}: the name {} belongs to several signals", what, inQuotes(value.text)),
                           "write the number of the signal");
    return std::nullopt;
  }
  return first->second;
}

void reportUnknownObject(const Mark& mark, std::string_view what, const std::string& name, Reading& reading) {
  std::vector<std::string_view> names;
  for (const ObjectDef& object : reading.scenario.objects) {
    if (!object.name.empty()) {
      names.push_back(object.name);
    }
  }
  reading.problems.unknownWord(mark, fmt::format("{}: unknown object {}", what, inQuotes(name)), name, names);
}

const std::string* readObjectName(const Value& value, std::string_view what, Reading& reading) {
  const std::string* name = readWord(value, what, reading.problems);
  if (name != nullptr && !reading.objects.contains(*name)) {
    reportUnknownObject(value.mark, what, *name, reading);
    return nullptr;
  }
  return name;
}

void checkWithinLimit(const Value& value, double time, Reading& reading) {
  if (time > reading.scenario.limit) {
    reading.problems.warning(value.mark,
                             fmt::format("at: {} is after the limit of {} s", inQuotes(value.text), reading.scenario.limit),
                             "raise 'limit'");
  }
}

}  // namespace motion::host::scenario
