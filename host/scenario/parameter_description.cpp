// Describes the parameters of a command to its user, from the command's binary schema.
#include <fmt/format.h>

#include <type_traits>

#include "host/scenario/binary_schema.h"
#include "host/scenario/parameter_encoder.h"
#include "host/scenario/words.h"

namespace motion::host::scenario {
namespace {

constexpr const char* NONE = "none";

template <typename T>
constexpr std::string_view nameOfScalar() {
  if constexpr (std::is_same_v<T, bool>) {
    return "bool";
  } else if constexpr (std::is_floating_point_v<T>) {
    return sizeof(T) == sizeof(float) ? "float" : "double";
  } else {
    constexpr std::string_view SIGNED[] = {"int8", "int16", "int32", "int64"};
    constexpr std::string_view UNSIGNED[] = {"uint8", "uint16", "uint32", "uint64"};
    constexpr std::size_t INDEX = sizeof(T) == 1 ? 0 : sizeof(T) == 2 ? 1 : sizeof(T) == 4 ? 2 : 3;
    return std::is_signed_v<T> ? SIGNED[INDEX] : UNSIGNED[INDEX];
  }
}

std::string typeText(const BinarySchema& schema, const reflection::Type& type) {
  const bool isList = type.base_type() == reflection::Vector;
  const std::string prefix = isList ? "list of " : "";
  const reflection::BaseType base = scalarTypeOf(type);
  if (!isSupported(type)) {
    return prefix + "table";
  }
  if (base == reflection::String) {
    return prefix + "text";
  }
  if (const reflection::Enum* enumeration = schema.enumeration(type)) {
    return prefix + "one of " + listOfWords(namesOf(*enumeration));
  }
  return prefix + std::string(visitScalarType(base, []<typename T>() { return nameOfScalar<T>(); }));
}

std::string defaultText(const BinarySchema& schema, const reflection::Field& field) {
  const reflection::Type& type = *field.type();
  const bool isScalar =
      isSupported(type) && type.base_type() != reflection::Vector && type.base_type() != reflection::String;
  if (!isScalar || field.optional()) {
    return NONE;
  }
  if (const reflection::Enum* enumeration = schema.enumeration(type)) {
    for (const reflection::EnumVal* value : *enumeration->values()) {
      if (value->value() == field.default_integer()) {
        return value->name()->str();
      }
    }
  }
  return visitScalarType(type.base_type(), [&]<typename T>() {
    if constexpr (std::is_same_v<T, bool>) {
      return std::string(field.default_integer() != 0 ? "true" : "false");
    } else if constexpr (std::is_floating_point_v<T>) {
      return fmt::format("{}", static_cast<T>(field.default_real()));
    } else {
      return fmt::format("{}", static_cast<T>(field.default_integer()));
    }
  });
}

// Lines of documentation begin with the space that follows the comment marks.
std::string documentationOf(const reflection::Field& field) {
  std::string result;
  if (field.documentation() == nullptr) {
    return result;
  }
  for (const flatbuffers::String* line : *field.documentation()) {
    const std::string_view text = line->string_view();
    const std::size_t first = text.find_first_not_of(' ');
    if (first != std::string_view::npos) {
      result += fmt::format("{}{}", result.empty() ? "" : " ", text.substr(first, text.find_last_not_of(' ') - first + 1));
    }
  }
  return result;
}

}  // namespace

std::vector<FieldInfo> describeParameters(std::span<const std::uint8_t> binarySchema) {
  std::vector<FieldInfo> result;
  const auto schema = BinarySchema::open(binarySchema);
  if (!schema) {
    return result;
  }
  for (const reflection::Field* field : schema->fields()) {
    result.push_back({std::string(nameOf(*field)), typeText(*schema, *field->type()), defaultText(*schema, *field),
                      documentationOf(*field)});
  }
  return result;
}

}  // namespace motion::host::scenario
