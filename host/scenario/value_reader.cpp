// Single values of a scenario.
#include "host/scenario/value_reader.h"

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <utility>

#include "host/scenario/numbers.h"
#include "host/scenario/words.h"

namespace motion::host::scenario {
namespace {

constexpr double MILLIMETRES_PER_METRE = 1000.0;

struct TimeUnit {
  std::string_view name;
  double perSecond;
};
// The micro sign has two code points that look alike; keyboards produce either.
constexpr std::array<TimeUnit, 5> TIME_UNITS{{{"s", 1.0}, {"ms", 1e3}, {"us", 1e6}, {"\u00B5s", 1e6}, {"\u03BCs", 1e6}}};
constexpr std::string_view TIME_REMEDY = "write a number and one of the units s, ms, us, as in '5 ms'";

std::string_view nameOfKind(Value::Kind kind) {
  switch (kind) {
    case Value::Kind::EMPTY:
      return "nothing";
    case Value::Kind::LIST:
      return "a list";
    case Value::Kind::MAP:
      return "a map";
    case Value::Kind::SCALAR:
      return "a single value";
  }
  return "nothing";
}

std::string_view trimmed(std::string_view text) {
  const std::size_t first = text.find_first_not_of(" \t");
  if (first == std::string_view::npos) {
    return {};
  }
  return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

// Whether a scalar is written in a way that can be a number or a boolean at all; reports if not.
bool isUnquotedScalar(const Value& value, std::string_view what, std::string_view expected, ProblemCollector& problems) {
  if (value.kind == Value::Kind::SCALAR && !value.quoted) {
    return true;
  }
  const bool quoted = value.kind == Value::Kind::SCALAR;
  reportUnexpected(value, what, expected, problems, quoted ? "write it without quotes" : "");
  return false;
}

// The inline form of one value; `outermost` leaves the braces of a map out.
void appendInline(const Value& value, bool outermost, std::string& line) {
  std::string_view separator;
  switch (value.kind) {
    case Value::Kind::EMPTY:
      line += "null";
      break;
    case Value::Kind::SCALAR:
      line += value.quoted ? fmt::format("\"{}\"", value.text) : value.text;
      break;
    case Value::Kind::LIST:
      line += '[';
      for (const Value& item : value.items) {
        line += separator;
        appendInline(item, false, line);
        separator = ", ";
      }
      line += ']';
      break;
    case Value::Kind::MAP:
      line += outermost ? "" : "{";
      for (const auto& [key, field] : value.fields) {
        line += fmt::format("{}{}: ", separator, key);
        appendInline(field, false, line);
        separator = ", ";
      }
      line += outermost ? "" : "}";
      break;
  }
}

}  // namespace

std::string describe(const Value& value) {
  if (value.kind != Value::Kind::SCALAR) {
    return std::string(nameOfKind(value.kind));
  }
  return value.quoted ? fmt::format("the text {}", inQuotes(value.text)) : inQuotes(value.text);
}

std::string inOneLine(const Value& value) {
  std::string line;
  appendInline(value, true, line);
  std::replace(line.begin(), line.end(), '\n', ' ');
  return line;
}

void reportUnexpected(const Value& value, std::string_view what, std::string_view expected, ProblemCollector& problems,
                      std::string remedy) {
  problems.error(value.mark, fmt::format("{}: expected {}, found {}", what, expected, describe(value)), std::move(remedy));
}

bool isKind(const Value& value, Value::Kind kind, std::string_view what, ProblemCollector& problems) {
  if (value.kind != kind) {
    reportUnexpected(value, what, nameOfKind(kind), problems);
  }
  return value.kind == kind;
}

bool isKindOrEmpty(const Value& value, Value::Kind kind, std::string_view what, ProblemCollector& problems) {
  return value.kind == Value::Kind::EMPTY || isKind(value, kind, what, problems);
}

const std::string* readWord(const Value& value, std::string_view what, ProblemCollector& problems) {
  if (value.kind != Value::Kind::SCALAR || value.text.empty()) {
    reportUnexpected(value, what, "a word", problems);
    return nullptr;
  }
  return &value.text;
}

std::optional<bool> readBool(const Value& value, std::string_view what, ProblemCollector& problems) {
  const bool plain = value.kind == Value::Kind::SCALAR && !value.quoted;
  if (!plain || (value.text != "true" && value.text != "false")) {
    reportUnexpected(value, what, "true or false", problems);
    return std::nullopt;
  }
  return value.text == "true";
}

std::optional<std::uint32_t> readInteger(const Value& value, std::string_view what, std::uint32_t least, std::uint32_t most,
                                         ProblemCollector& problems) {
  const std::string expected = fmt::format("a whole number from {} to {}", least, most);
  if (!isUnquotedScalar(value, what, expected, problems)) {
    return std::nullopt;
  }
  const auto number = parseNumber<std::uint32_t>(value.text);
  if (number.fault != NumberFault::NONE || number.value < least || number.value > most) {
    reportUnexpected(value, what, expected, problems);
    return std::nullopt;
  }
  return number.value;
}

std::optional<double> readLength(const Value& value, std::string_view what, ProblemCollector& problems) {
  if (!isUnquotedScalar(value, what, "a number [mm]", problems)) {
    return std::nullopt;
  }
  const auto number = parseNumber<double>(value.text);
  switch (number.fault) {
    case NumberFault::NONE:
      return number.value / MILLIMETRES_PER_METRE;
    case NumberFault::MALFORMED:
      reportUnexpected(value, what, "a number [mm]", problems, "write the number alone, as in '250' or '0.5'");
      break;
    case NumberFault::OUT_OF_RANGE:
    case NumberFault::NOT_FINITE:
      reportUnexpected(value, what, "a finite number [mm]", problems);
      break;
  }
  return std::nullopt;
}

std::array<double, 3> readPosition(const Value& value, std::string_view what, core::ObjectType type,
                                   ProblemCollector& problems) {
  std::array<double, 3> position{};
  if (type == core::ObjectType::AXIS) {
    position[0] = readLength(value, what, problems).value_or(0.0);
  } else if (type == core::ObjectType::KINEMATICS) {
    if (value.kind != Value::Kind::LIST || value.items.size() != position.size()) {
      reportUnexpected(value, what, "a list of three numbers [mm]", problems, "as in '[0, 0, 100]'");
      return position;
    }
    std::transform(value.items.begin(), value.items.end(), position.begin(),
                   [&](const Value& item) { return readLength(item, what, problems).value_or(0.0); });
  }
  return position;
}

std::optional<double> readTime(const Value& value, std::string_view what, ProblemCollector& problems) {
  if (value.kind != Value::Kind::SCALAR) {
    reportUnexpected(value, what, "a time", problems, std::string(TIME_REMEDY));
    return std::nullopt;
  }
  const auto complain = [&](std::string_view fault) {
    problems.error(value.mark, fmt::format("{}: {} {}", what, inQuotes(value.text), fault), std::string(TIME_REMEDY));
    return std::nullopt;
  };
  std::string_view rest = value.text;
  const auto number = takeNumber<double>(rest);
  const std::string_view unit = trimmed(rest);
  const auto known = std::find_if(TIME_UNITS.begin(), TIME_UNITS.end(), [&](const TimeUnit& u) { return u.name == unit; });
  if (number.fault == NumberFault::MALFORMED) {
    return complain("is not a time");
  }
  if (unit.empty()) {
    return complain(number.fault == NumberFault::NONE ? "has no unit" : "is not a finite time");
  }
  if (known == TIME_UNITS.end()) {
    const bool hasNumber = number.fault == NumberFault::NONE;  // otherwise a word that merely begins like "inf" or "nan"
    return complain(hasNumber ? fmt::format("has the unknown unit {}", inQuotes(unit)) : "is not a time");
  }
  if (number.fault != NumberFault::NONE) {
    return complain("is not a finite time");
  }
  if (number.value < 0.0) {
    return complain("is negative");
  }
  return number.value / known->perSecond;
}

MapReader::MapReader(const Value& map, std::string what, std::initializer_list<std::string_view> keys,
                     ProblemCollector& problems)
    : m_map(map), m_what(std::move(what)), m_keys(keys), m_problems(problems) {
  for (const auto& [key, field] : m_map.fields) {
    if (std::find(m_keys.begin(), m_keys.end(), key) == m_keys.end()) {
      m_problems.unknownWord(field.key, fmt::format("{}: unknown key {}", m_what, inQuotes(key)), key, m_keys);
    }
  }
}

const Value* MapReader::find(std::string_view key) const {
  const auto& fields = m_map.fields;
  const auto found = std::find_if(fields.begin(), fields.end(), [&](const auto& field) { return field.key == key; });
  return found != fields.end() ? &found->value : nullptr;
}

const Value* MapReader::require(std::string_view key) const {
  const Value* field = find(key);
  if (field == nullptr) {
    m_problems.error(m_map.mark, fmt::format("{}: {} is missing", m_what, inQuotes(key)));
  }
  return field;
}

}  // namespace motion::host::scenario
