#include "host/scenario/parameter_reader.h"

#include <flatbuffers/flatbuffers.h>
#include <flatbuffers/reflection.h>

#include <algorithm>

namespace motion::host::scenario {

ParameterReader::ParameterReader(std::span<const std::uint8_t> binarySchema, const comm::datalayer::Variant& parameters)
    : m_schema(BinarySchema::open(binarySchema)), m_table(flatbuffers::GetAnyRoot(parameters.getFlatBuffer().data())) {}

const reflection::Field* ParameterReader::find(std::string_view name) const {
  if (!m_schema) {
    return nullptr;
  }
  const auto fields = m_schema->fields();
  const auto found = std::ranges::find(fields, name, [](const reflection::Field* field) { return nameOf(*field); });
  return found != fields.end() ? *found : nullptr;
}

std::optional<double> ParameterReader::number(std::string_view name) const {
  const reflection::Field* const field = find(name);
  if (field == nullptr || !isSupported(*field->type()) || field->type()->base_type() > reflection::Double) {
    return std::nullopt;
  }
  // The schema keeps the defaults of integers and of real numbers in places of their own.
  return field->type()->base_type() < reflection::Float ? static_cast<double>(flatbuffers::GetAnyFieldI(*m_table, *field))
                                                        : flatbuffers::GetAnyFieldF(*m_table, *field);
}

std::vector<double> ParameterReader::numbers(std::string_view name) const {
  std::vector<double> values;
  const reflection::Field* const field = find(name);
  if (field == nullptr || field->type()->base_type() != reflection::Vector ||
      field->type()->element() > reflection::Double) {
    return values;
  }
  if (const auto* const list = flatbuffers::GetFieldAnyV(*m_table, *field); list != nullptr) {
    for (flatbuffers::uoffset_t i = 0; i < list->size(); ++i) {
      values.push_back(flatbuffers::GetAnyVectorElemF(list, field->type()->element(), i));
    }
  }
  return values;
}

std::string ParameterReader::text(std::string_view name) const {
  const reflection::Field* const field = find(name);
  if (field == nullptr || field->type()->base_type() != reflection::String) {
    return "";
  }
  const auto* const value = flatbuffers::GetFieldS(*m_table, *field);
  return value != nullptr ? value->str() : "";
}

}  // namespace motion::host::scenario
