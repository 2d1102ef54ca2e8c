// Memory maps for tests.
#pragma once

#include <span>  // before FlatBuffers, which uses it if it is there

#include <flatbuffers/flatbuffers.h>

#include <cstdint>
#include <initializer_list>
#include <string>
#include <vector>

#include "comm/datalayer/variant.h"
#include "schemas/datalayer/memory_map_generated.h"

namespace motion::host::test {

struct MappedVariable {
  std::string name;
  std::uint32_t bitOffset;
  std::uint32_t bitSize;
};

inline comm::datalayer::Variant memoryMap(const std::vector<MappedVariable>& variables, std::uint32_t revision = 0) {
  flatbuffers::FlatBufferBuilder builder;
  std::vector<flatbuffers::Offset<comm::datalayer::Variable>> offsets;
  for (const auto& variable : variables) {
    offsets.push_back(comm::datalayer::CreateVariableDirect(builder, variable.name.c_str(), variable.bitOffset,
                                                            variable.bitSize, "types/datalayer/uint8"));
  }
  builder.Finish(comm::datalayer::CreateMemoryMapDirect(builder, &offsets, revision));
  return comm::datalayer::Variant::fromFlatBuffer(builder.GetBufferSpan());
}

}  // namespace motion::host::test
