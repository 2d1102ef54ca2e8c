// Floors of the data layer: a node that has nothing to do, and the levels of an address looked up once each.
#pragma once

#include <cstddef>
#include <memory>
#include <string>
#include <string_view>
#include <unordered_set>
#include <vector>

#include "comm/datalayer/i_provider_node.h"

namespace motion::bench {

/// Answers at once, always the same: what is left of a request is its way to the provider and back.
[[nodiscard]] std::unique_ptr<comm::datalayer::IProviderNode> makeConstantNode(comm::datalayer::Variant value,
                                                                               comm::datalayer::Variant names,
                                                                               comm::datalayer::Variant metadata);

/// What is known of addresses, level by level.
class LevelsFloor {
 public:
  /// Throws std::bad_alloc.
  void add(std::string_view address);
  /// Walks the levels once and looks each up in a hashed set. How many are known.
  [[nodiscard]] std::size_t countKnown(std::string_view address) const;

 private:
  struct TextHash {
    using is_transparent = void;
    [[nodiscard]] std::size_t operator()(std::string_view text) const noexcept {
      return std::hash<std::string_view>{}(text);
    }
  };

  std::vector<std::unordered_set<std::string, TextHash, std::equal_to<>>> m_levels;
};

}  // namespace motion::bench
