// A table of parameters as a client would send it, field by field, whether it makes sense or not.
#pragma once

#include <flatbuffers/flatbuffers.h>

#include <functional>
#include <string>
#include <utility>
#include <vector>

#include "comm/datalayer/variant.h"

namespace motion::test {

/// Fields are named by their place in the table: 4 is the first, 6 the second, and so on. Fields that are not given are
/// absent.
class ParameterTable {
 public:
  using Place = flatbuffers::voffset_t;

  ParameterTable();

  ParameterTable& withText(Place place, const std::string& text);
  ParameterTable& with(Place place, const std::vector<double>& values);
  ParameterTable& withTexts(Place place, const std::vector<std::string>& texts);
  template <typename NUMBER>
  ParameterTable& with(Place place, NUMBER value) {
    m_adders.push_back([this, place, value] { m_builder.AddElement<NUMBER>(place, value, 0); });
    return *this;
  }

  /// The finished buffer. Once only.
  [[nodiscard]] std::vector<std::uint8_t> finishBytes();
  [[nodiscard]] comm::datalayer::Variant finish();
  /// The same table four bytes further on: numbers of eight bytes in a vector then lie where such a number must not be read.
  /// No other field may have eight bytes; a verifier refuses those. Once only.
  [[nodiscard]] std::vector<std::uint8_t> finishMovedBytes();

 private:
  ParameterTable& add(Place place, flatbuffers::Offset<void> offset);

  flatbuffers::FlatBufferBuilder m_builder;
  std::vector<std::function<void()>> m_adders;
};

}  // namespace motion::test
