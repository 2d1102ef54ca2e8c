// Turns the parameters of a command, as a user wrote them, into the FlatBuffers table that the command expects. What that is
// comes from the command's binary schema alone.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "host/scenario/problem.h"
#include "host/scenario/scenario.h"

namespace motion::host::scenario {

struct EncodeResult {
  std::optional<comm::datalayer::Variant> data;  ///< empty if there are problems
  Problems problems;
};

/// Every field that `parameters` names is written, also when it equals its default; all others stay absent. Problems name
/// `commandName`; those that concern no single parameter are placed at `commandMark`. May throw std::bad_alloc. [any]
[[nodiscard]] EncodeResult encodeParameters(std::span<const std::uint8_t> binarySchema, const Value& parameters,
                                            const std::string& commandName, const Mark& commandMark,
                                            const std::string& file);

/// What a user needs to know of one parameter.
struct FieldInfo {
  std::string name;
  std::string type;           ///< such as "uint32", "text", "list of double", "one of ON, OFF"
  std::string defaultText;    ///< what counts if it is absent; "none" if then there is no value
  std::string documentation;  ///< in one line
};

/// In the order of declaration; empty if the schema cannot be used.
[[nodiscard]] std::vector<FieldInfo> describeParameters(std::span<const std::uint8_t> binarySchema);

/// Whether the bytes are a schema with a root table.
[[nodiscard]] bool isUsableSchema(std::span<const std::uint8_t> binarySchema);

}  // namespace motion::host::scenario
