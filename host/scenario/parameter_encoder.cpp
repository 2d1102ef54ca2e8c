// Turns parameters into FlatBuffers through their binary schema.
#include "host/scenario/parameter_encoder.h"

#include <fmt/format.h>

#include <algorithm>
#include <concepts>
#include <functional>
#include <iterator>
#include <limits>
#include <string_view>
#include <type_traits>
#include <unordered_set>
#include <utility>

#include "host/scenario/binary_schema.h"
#include "host/scenario/numbers.h"
#include "host/scenario/problem_collector.h"
#include "host/scenario/value_reader.h"
#include "host/scenario/words.h"

namespace motion::host::scenario {
namespace {

// The table's own form of a boolean is a byte.
template <typename T>
using Stored = std::conditional_t<std::same_as<T, bool>, std::uint8_t, T>;

// Writes one table. Texts and lists are created as they are read; the table itself can only be begun after all of them, so
// that its elements wait as functions.
class TableEncoder {
 public:
  TableEncoder(const BinarySchema& schema, const std::string& command, ProblemCollector& problems)
      : m_schema(schema), m_fields(schema.fields()), m_command(command), m_problems(problems) {}

  // The finished buffer; only meaningful without problems.
  [[nodiscard]] std::span<const std::uint8_t> encode(const Value& parameters, const Mark& commandMark) {
    for (const auto& [name, value] : parameters.fields) {
      encodeField(name, value);
    }
    for (const reflection::Field* field : m_fields) {
      if (field->required() && !m_given.contains(nameOf(*field))) {
        m_problems.error(commandMark, fmt::format("{}: the parameter {} is missing", m_command, inQuotes(nameOf(*field))));
      }
    }
    const flatbuffers::uoffset_t start = m_builder.StartTable();
    for (const auto& addElement : m_elements) {
      addElement();
    }
    const flatbuffers::Offset<flatbuffers::Table> table(m_builder.EndTable(start));
    const std::string identifier = flatbuffers::GetString(m_schema.schema().file_ident());
    m_builder.Finish(table, identifier.empty() ? nullptr : identifier.c_str());
    return {m_builder.GetBufferPointer(), m_builder.GetSize()};
  }

 private:
  void encodeField(const std::string& name, const Value& value) {
    const auto found = std::find_if(m_fields.begin(), m_fields.end(),
                                    [&](const reflection::Field* field) { return nameOf(*field) == name; });
    if (found == m_fields.end()) {
      std::vector<std::string_view> names;
      std::transform(m_fields.begin(), m_fields.end(), std::back_inserter(names),
                     [](const auto* field) { return nameOf(*field); });
      m_problems.unknownWord(value.key, fmt::format("{}: unknown parameter {}", m_command, inQuotes(name)), name, names);
      return;
    }
    const reflection::Field& field = **found;
    if (!m_given.insert(nameOf(field)).second) {
      m_problems.error(value.key, fmt::format("{}: the parameter {} stands twice", m_command, inQuotes(name)));
      return;
    }
    const reflection::Type& type = *field.type();
    m_what = fmt::format("{}: {}", m_command, name);
    if (!isSupported(type)) {
      m_problems.error(value.key, fmt::format("{}: a scenario cannot give a parameter of this type", m_what),
                       "what it can give are numbers, true and false, texts, and lists of these");
    } else if (type.base_type() == reflection::Vector) {
      encodeList(field, value);
    } else if (type.base_type() == reflection::String) {
      if (const std::string* text = readText(value)) {
        addOffset(field, m_builder.CreateString(*text).o);
      }
    } else {
      visitScalarType(type.base_type(), [&]<typename T>() {
        if (const auto scalar = readScalar<T>(type, value)) {
          m_elements.emplace_back([this, offset = field.offset(), stored = static_cast<Stored<T>>(*scalar)] {
            m_builder.AddElement(offset, stored);
          });
        }
      });
    }
  }

  void encodeList(const reflection::Field& field, const Value& value) {
    const reflection::Type& type = *field.type();
    if (value.kind != Value::Kind::LIST) {
      reportUnexpected(value, m_what, "a list", m_problems, "write it in brackets, separated by ','");
      return;
    }
    if (type.element() == reflection::String) {
      std::vector<std::string> texts;
      for (const Value& item : value.items) {
        if (const std::string* text = readText(item)) {
          texts.push_back(*text);
        }
      }
      addOffset(field, m_builder.CreateVectorOfStrings(texts).o);
      return;
    }
    visitScalarType(type.element(), [&]<typename T>() {
      std::vector<Stored<T>> numbers;
      for (const Value& item : value.items) {
        if (const auto scalar = readScalar<T>(type, item)) {
          numbers.push_back(static_cast<Stored<T>>(*scalar));
        }
      }
      addOffset(field, m_builder.CreateVector(numbers).o);
    });
  }

  void addOffset(const reflection::Field& field, flatbuffers::uoffset_t place) {
    m_elements.emplace_back(
        [this, offset = field.offset(), place] { m_builder.AddOffset(offset, flatbuffers::Offset<void>(place)); });
  }

  // Any single value is a text, quoted or not.
  const std::string* readText(const Value& value) {
    if (value.kind != Value::Kind::SCALAR) {
      reportUnexpected(value, m_what, "a text", m_problems);
      return nullptr;
    }
    if (value.text.find('\0') != std::string::npos) {
      m_problems.error(value.mark, fmt::format("{}: the text {} holds a NUL character", m_what, inQuotes(value.text)));
      return nullptr;
    }
    return &value.text;
  }

  template <typename T>
  std::optional<T> readScalar(const reflection::Type& type, const Value& value) {
    if constexpr (std::same_as<T, bool>) {
      return readBool(value, m_what, m_problems);
    } else if constexpr (std::floating_point<T>) {
      return readFloat<T>(value);
    } else if (const reflection::Enum* enumeration = m_schema.enumeration(type)) {
      return readEnum<T>(*enumeration, value);
    } else {
      const std::string expected =
          fmt::format("a whole number from {} to {}", +std::numeric_limits<T>::min(), +std::numeric_limits<T>::max());
      const auto number = isPlain(value) ? parseNumber<T>(value.text) : Number<T>{{}, NumberFault::MALFORMED};
      if (number.fault != NumberFault::NONE) {
        reportUnexpected(value, m_what, expected, m_problems, remedyForQuotes(value));
        return std::nullopt;
      }
      return number.value;
    }
  }

  template <typename T>
  std::optional<T> readFloat(const Value& value) {
    const auto number = isPlain(value) ? parseNumber<T>(value.text) : Number<T>{{}, NumberFault::MALFORMED};
    if (number.fault == NumberFault::NONE) {
      return number.value;
    }
    const bool malformed = number.fault == NumberFault::MALFORMED;
    const std::string range =
        fmt::format("a number from {} to {}", std::numeric_limits<T>::lowest(), std::numeric_limits<T>::max());
    reportUnexpected(value, m_what, malformed ? "a number" : range, m_problems, remedyForQuotes(value));
    return std::nullopt;
  }

  // By name, or by a number that has a name.
  template <typename T>
  std::optional<T> readEnum(const reflection::Enum& enumeration, const Value& value) {
    const auto number = isPlain(value) ? parseNumber<T>(value.text) : Number<T>{{}, NumberFault::MALFORMED};
    for (const reflection::EnumVal* candidate : *enumeration.values()) {
      const auto known = static_cast<T>(candidate->value());
      const bool byName = value.kind == Value::Kind::SCALAR && candidate->name()->string_view() == value.text;
      if (byName || (number.fault == NumberFault::NONE && number.value == known)) {
        return known;
      }
    }
    const std::string_view word = value.kind == Value::Kind::SCALAR ? std::string_view(value.text) : std::string_view();
    m_problems.unknownWord(value.mark, fmt::format("{}: {} is none of its values", m_what, describe(value)), word,
                           namesOf(enumeration));
    return std::nullopt;
  }

  static bool isPlain(const Value& value) { return value.kind == Value::Kind::SCALAR && !value.quoted; }
  static std::string remedyForQuotes(const Value& value) {
    return value.kind == Value::Kind::SCALAR && value.quoted ? "write it without quotes" : "";
  }

  const BinarySchema& m_schema;
  std::vector<const reflection::Field*> m_fields;
  const std::string& m_command;
  ProblemCollector& m_problems;
  std::string m_what;  // begins the messages about the present parameter
  std::unordered_set<std::string_view> m_given;
  std::vector<std::function<void()>> m_elements;
  flatbuffers::FlatBufferBuilder m_builder;
};

}  // namespace

EncodeResult encodeParameters(std::span<const std::uint8_t> binarySchema, const Value& parameters,
                              const std::string& commandName, const Mark& commandMark, const std::string& file) {
  ProblemCollector problems(file);
  EncodeResult result;
  const auto schema = BinarySchema::open(binarySchema);
  if (!schema) {
    problems.error(commandMark, fmt::format("{}: the schema of its parameters cannot be used", commandName));
  } else if (isKindOrEmpty(parameters, Value::Kind::MAP, commandName, problems)) {
    TableEncoder encoder(*schema, commandName, problems);
    const auto buffer = encoder.encode(parameters, commandMark);
    const bool valid = flatbuffers::Verify(schema->schema(), schema->root(), buffer.data(), buffer.size());
    if (!problems.hasErrors() && valid) {
      result.data = comm::datalayer::Variant::fromFlatBuffer(buffer);
    } else if (!problems.hasErrors()) {
      problems.error(commandMark, fmt::format("{}: the parameters do not fit their schema", commandName));
    }
  }
  result.problems = problems.take();
  return result;
}

bool isUsableSchema(std::span<const std::uint8_t> binarySchema) {
  return BinarySchema::open(binarySchema).has_value();
}

}  // namespace motion::host::scenario
