#include "host/datalayer/built_in_nodes.h"

#include "host/datalayer/address.h"
#include "schemas/datalayer/metadata_generated.h"

namespace motion::host::datalayer {

using comm::datalayer::Variant;

namespace {

constexpr std::string_view BUILT_IN[] = {NODE_LIST, SCOPE_LIST};
constexpr std::uint32_t VARIABLE_CLASS = 3;
constexpr std::uint32_t FOLDER_CLASS = 7;

}  // namespace

bool isBuiltIn(std::string_view address) noexcept {
  return address == NODE_LIST || address == SCOPE_LIST;
}

std::optional<Variant> readBuiltIn(const NodeRegister& nodes, std::string_view address) {
  if (address == SCOPE_LIST) {
    return Variant(nodes.scopes().identifiers());
  }
  if (address != NODE_LIST) {
    return std::nullopt;
  }
  Variant::Strings addresses(std::begin(BUILT_IN), std::end(BUILT_IN));
  for (std::string& registered : nodes.addresses()) {
    addresses.push_back(std::move(registered));
  }
  return Variant(std::move(addresses));
}

std::set<std::string> builtInChildrenOf(std::string_view folder) {
  std::set<std::string> children;
  for (const std::string_view address : BUILT_IN) {
    if (address.starts_with(folder) && address.size() > folder.size() && (folder.empty() || address[folder.size()] == '/')) {
      std::string_view rest = address.substr(folder.empty() ? 0 : folder.size() + 1);
      std::string_view level;
      static_cast<void>(takeLevel(rest, level));
      children.emplace(level);
    }
  }
  return children;
}

Variant builtInMetadata(bool isReadable) {
  flatbuffers::FlatBufferBuilder builder;
  const auto operations = comm::datalayer::CreateAllowedOperations(builder, isReadable, false, false, false, !isReadable);
  builder.Finish(comm::datalayer::CreateMetadataDirect(builder, isReadable ? VARIABLE_CLASS : FOLDER_CLASS, operations));
  return Variant::fromFlatBuffer({builder.GetBufferPointer(), builder.GetSize()});
}

}  // namespace motion::host::datalayer
