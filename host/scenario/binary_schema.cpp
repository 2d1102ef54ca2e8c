// Checks of binary schemas beyond what their own verification covers.
#include "host/scenario/binary_schema.h"

#include <cstddef>
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

// Whether a field of a table can have the type; lists of lists do not exist.
bool isTableType(const reflection::Type& type) {
  const auto isValid = [](reflection::BaseType base) { return base > reflection::None && base < reflection::Array; };
  const bool isList = type.base_type() == reflection::Vector;
  return isValid(type.base_type()) && (!isList || (isValid(type.element()) && type.element() != reflection::Vector));
}

// Whether every union follows the field that tells its type, which is where verification looks for it.
bool haveUnionsTheirTypes(const std::vector<const reflection::Field*>& byNumber) {
  for (std::size_t i = 0; i < byNumber.size(); ++i) {
    const bool isUnion = byNumber[i]->type()->base_type() == reflection::Union;
    if (isUnion && (i == 0 || byNumber[i - 1]->type()->base_type() != reflection::UType)) {
      return false;
    }
  }
  return true;
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
  // A builder takes the identifier as a C string of this length.
  const std::string_view identifier = flatbuffers::GetStringView(schema().file_ident());
  if (!identifier.empty() &&
      (identifier.size() != flatbuffers::kFileIdentifierLength || identifier.find('\0') != std::string_view::npos)) {
    return false;
  }
  // Fields are numbered without gaps and their places follow from their numbers; a builder relies on it.
  std::vector<const reflection::Field*> byNumber(root().fields()->size(), nullptr);
  for (const reflection::Field* field : *root().fields()) {
    const bool fits = field->id() < byNumber.size() && byNumber[field->id()] == nullptr &&
                      field->offset() == flatbuffers::FieldIndexToOffset(field->id());
    if (!fits || !isTableType(*field->type()) || !hasValidIndex(*field->type(), schema())) {
      return false;
    }
    byNumber[field->id()] = field;
  }
  return haveUnionsTheirTypes(byNumber);
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
