// A table of parameters as a client would send it, field by field, whether it makes sense or not.
#include "support/parameter_table.h"

namespace motion::test {

ParameterTable::ParameterTable() {
  m_builder.ForceDefaults(true);
}

ParameterTable& ParameterTable::withText(Place place, const std::string& text) {
  return add(place, m_builder.CreateString(text).Union());
}

ParameterTable& ParameterTable::with(Place place, const std::vector<double>& values) {
  return add(place, m_builder.CreateVector(values).Union());
}

ParameterTable& ParameterTable::withTexts(Place place, const std::vector<std::string>& texts) {
  return add(place, m_builder.CreateVectorOfStrings(texts).Union());
}

ParameterTable& ParameterTable::add(Place place, flatbuffers::Offset<void> offset) {
  m_adders.push_back([this, place, offset] { m_builder.AddOffset(place, offset); });
  return *this;
}

std::vector<std::uint8_t> ParameterTable::finishBytes() {
  const auto start = m_builder.StartTable();
  for (const auto& add : m_adders) {
    add();
  }
  m_builder.Finish(flatbuffers::Offset<flatbuffers::Table>(m_builder.EndTable(start)));
  return {m_builder.GetBufferPointer(), m_builder.GetBufferPointer() + m_builder.GetSize()};
}

std::vector<std::uint8_t> ParameterTable::finishMovedBytes() {
  constexpr flatbuffers::uoffset_t STEP = 4;
  auto bytes = finishBytes();
  const auto root = flatbuffers::ReadScalar<flatbuffers::uoffset_t>(bytes.data());
  flatbuffers::WriteScalar(bytes.data(), root + STEP);
  bytes.insert(bytes.begin() + sizeof(root), STEP, 0);
  return bytes;
}

comm::datalayer::Variant ParameterTable::finish() {
  return comm::datalayer::Variant::fromFlatBuffer(finishBytes());
}

}  // namespace motion::test
