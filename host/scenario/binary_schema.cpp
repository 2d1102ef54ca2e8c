// Checks of binary schemas beyond what their own verification covers.
#include "host/scenario/binary_schema.h"

#include <utility>

namespace motion::host::scenario {
namespace {

bool isScalar(reflection::BaseType type) {
  return type > reflection::UType && type <= reflection::Double;
}

// Whether what a type refers to exists.
bool hasValidIndex(const reflection::Type& type, const reflection::Schema& schema) {
  const reflection::BaseType base = scalarTypeOf(type);
  const auto index = static_cast<std::int64_t>(type.index());
  if (base == reflection::Obj) {
    return index >= 0 && index < static_cast<std::int64_t>(schema.objects()->size());
  }
  return index < static_cast<std::int64_t>(schema.enums()->size());
}

bool isTableType(const reflection::Type& type) {
  const bool valid = type.base_type() > reflection::None && type.base_type() < reflection::Array;
  const bool isList = type.base_type() == reflection::Vector;
  return valid && (!isList || (type.element() > reflection::None && type.element() < reflection::Array));
}

}  // namespace

std::optional<BinarySchema> BinarySchema::open(std::span<const std::uint8_t> bytes) {
  BinarySchema result(bytes);
  return result.isUsable() ? std::optional(std::move(result)) : std::nullopt;
}

bool BinarySchema::isUsable() const {
  flatbuffers::Verifier verifier(m_bytes.data(), m_bytes.size());
  if (!reflection::VerifySchemaBuffer(verifier) || schema().root_table() == nullptr || root().is_struct()) {
    return false;
  }
  // Fields are numbered without gaps and their places follow from their numbers; a builder relies on it.
  std::vector<bool> seen(root().fields()->size(), false);
  for (const reflection::Field* field : *root().fields()) {
    const bool fits =
        field->id() < seen.size() && !seen[field->id()] && field->offset() == flatbuffers::FieldIndexToOffset(field->id());
    if (!fits || !isTableType(*field->type()) || !hasValidIndex(*field->type(), schema())) {
      return false;
    }
    seen[field->id()] = true;
  }
  return true;
}

std::vector<const reflection::Field*> BinarySchema::fields() const {
  std::vector<const reflection::Field*> byNumber(root().fields()->size(), nullptr);
  for (const reflection::Field* field : *root().fields()) {
    byNumber[field->id()] = field->deprecated() ? nullptr : field;
  }
  std::erase(byNumber, nullptr);
  return byNumber;
}

const reflection::Enum* BinarySchema::enumeration(const reflection::Type& type) const {
  const bool isEnum = isScalar(scalarTypeOf(type)) && type.index() >= 0;
  return isEnum ? schema().enums()->Get(static_cast<flatbuffers::uoffset_t>(type.index())) : nullptr;
}

reflection::BaseType scalarTypeOf(const reflection::Type& type) {
  return type.base_type() == reflection::Vector ? type.element() : type.base_type();
}

bool isSupported(const reflection::Type& type) {
  const reflection::BaseType base = scalarTypeOf(type);
  return isScalar(base) || base == reflection::String;
}

std::string_view nameOf(const reflection::Field& field) {
  return field.name()->string_view();
}

std::vector<std::string_view> namesOf(const reflection::Enum& enumeration) {
  std::vector<std::string_view> names;
  for (const reflection::EnumVal* value : *enumeration.values()) {
    names.push_back(value->name()->string_view());
  }
  return names;
}

}  // namespace motion::host::scenario
