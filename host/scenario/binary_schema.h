// A binary FlatBuffers schema that has been checked: its root table and the fields of that table.
#pragma once

#include <flatbuffers/reflection.h>

#include <cstdint>
#include <optional>
#include <span>
#include <string_view>
#include <vector>

namespace motion::host::scenario {

/// Owns a copy of the schema, aligned for access. Everything that it hands out lives as long as it does.
class BinarySchema {
 public:
  /// Empty if the bytes are no schema, or one without a usable root table. The bytes may come from anywhere.
  [[nodiscard]] static std::optional<BinarySchema> open(std::span<const std::uint8_t> bytes);

  [[nodiscard]] const reflection::Schema& schema() const { return *reflection::GetSchema(m_bytes.data()); }
  [[nodiscard]] const reflection::Object& root() const { return *schema().root_table(); }
  /// The fields of the root table in the order of their declaration, without those that are deprecated.
  [[nodiscard]] std::vector<const reflection::Field*> fields() const;
  /// The enumeration that a type or the elements of a list belong to; null if to none.
  [[nodiscard]] const reflection::Enum* enumeration(const reflection::Type& type) const;

 private:
  explicit BinarySchema(std::span<const std::uint8_t> bytes) : m_bytes(bytes.begin(), bytes.end()) {}
  [[nodiscard]] bool isUsable() const;

  std::vector<std::uint8_t> m_bytes;
};

/// The base type of a field, or of the elements of a list.
[[nodiscard]] reflection::BaseType scalarTypeOf(const reflection::Type& type);
/// Whether the encoder can write the type: numbers, booleans, enumerations, texts, and lists of these.
[[nodiscard]] bool isSupported(const reflection::Type& type);
[[nodiscard]] std::string_view nameOf(const reflection::Field& field);
[[nodiscard]] std::vector<std::string_view> namesOf(const reflection::Enum& enumeration);

/// Calls visitor.operator()<T>() with the C++ type of a number or boolean and returns its result.
template <typename Visitor>
decltype(auto) visitScalarType(reflection::BaseType type, Visitor&& visitor) {
  switch (type) {
    case reflection::Bool:
      return visitor.template operator()<bool>();
    case reflection::Byte:
      return visitor.template operator()<std::int8_t>();
    case reflection::UByte:
      return visitor.template operator()<std::uint8_t>();
    case reflection::Short:
      return visitor.template operator()<std::int16_t>();
    case reflection::UShort:
      return visitor.template operator()<std::uint16_t>();
    case reflection::Int:
      return visitor.template operator()<std::int32_t>();
    case reflection::UInt:
      return visitor.template operator()<std::uint32_t>();
    case reflection::Long:
      return visitor.template operator()<std::int64_t>();
    case reflection::ULong:
      return visitor.template operator()<std::uint64_t>();
    case reflection::Float:
      return visitor.template operator()<float>();
    default:
      return visitor.template operator()<double>();  // the only one left for which isSupported holds
  }
}

}  // namespace motion::host::scenario
