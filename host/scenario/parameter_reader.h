// Reads parameters back out of a FlatBuffers table by their names, with the defaults of the schema.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "comm/datalayer/variant.h"
#include "host/scenario/binary_schema.h"

namespace motion::host::scenario {

/// Of a value that the encoder made with the same schema. A field that the schema does not have, or that is of another kind,
/// gives nothing.
class ParameterReader {
 public:
  /// Borrows the value. Throws std::bad_alloc. [any]
  ParameterReader(std::span<const std::uint8_t> binarySchema, const comm::datalayer::Variant& parameters);

  [[nodiscard]] std::optional<double> number(std::string_view name) const;
  /// Of an absent list: nothing.
  [[nodiscard]] std::vector<double> numbers(std::string_view name) const;
  /// Of an absent text: empty.
  [[nodiscard]] std::string text(std::string_view name) const;

 private:
  [[nodiscard]] const reflection::Field* find(std::string_view name) const;

  std::optional<BinarySchema> m_schema;
  const flatbuffers::Table* m_table;
};

}  // namespace motion::host::scenario
