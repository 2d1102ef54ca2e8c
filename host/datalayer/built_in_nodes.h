// The nodes that the data layer has by itself: what is registered, and which scopes there are.
#pragma once

#include <optional>
#include <set>
#include <string>
#include <string_view>

#include "comm/datalayer/variant.h"
#include "host/datalayer/node_register.h"

namespace motion::host::datalayer {

/// All nodes as they were registered, wildcards among them.
inline constexpr std::string_view NODE_LIST = "datalayer/nodes";
/// The identifiers of all scopes.
inline constexpr std::string_view SCOPE_LIST = "datalayer/security/scopes";

[[nodiscard]] bool isBuiltIn(std::string_view address) noexcept;
/// Empty when the address is none of them. Throws std::bad_alloc. [any]
[[nodiscard]] std::optional<comm::datalayer::Variant> readBuiltIn(const NodeRegister& nodes, std::string_view address);
/// The levels that follow in their addresses. [any]
[[nodiscard]] std::set<std::string> builtInChildrenOf(std::string_view folder);
/// Of one of them, or of a folder that nobody else describes. [any]
[[nodiscard]] comm::datalayer::Variant builtInMetadata(bool isReadable);

}  // namespace motion::host::datalayer
