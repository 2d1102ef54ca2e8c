// What a client may do with which nodes.
#pragma once

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <string_view>

namespace motion::host::datalayer {

/// What can be done with a node. Browsing and asking for metadata is reading.
enum class Right : std::uint8_t { READ = 1, WRITE = 2, CREATE_AND_REMOVE = 4, USE = 8 };

/// Several rights, as bits of Right.
using Rights = std::uint8_t;
inline constexpr Rights NO_RIGHTS = 0;
[[nodiscard]] constexpr Rights operator|(Right a, Right b) noexcept {
  return static_cast<Rights>(static_cast<unsigned int>(a) | static_cast<unsigned int>(b));
}

/// Patterns and the rights that they grant, as a tree of levels. Patterns are anchored at both ends and tell upper from
/// lower case. Looking up costs as much as the address has levels, however many patterns there are; each level of a pattern
/// that stands for any adds a branch.
class AccessRights {
 public:
  /// Adds rights to all addresses that the pattern describes; a text that is no pattern grants nothing. Throws
  /// std::bad_alloc.
  void grant(std::string_view pattern, Rights rights);
  /// False for everything that is no address. [any]
  [[nodiscard]] bool allows(Right right, std::string_view address) const noexcept;

 private:
  struct Node {
    std::map<std::string, Node, std::less<>> levels;
    std::unique_ptr<Node> anyLevel;
    Rights here = NO_RIGHTS;      ///< for the address that ends here
    Rights fromHere = NO_RIGHTS;  ///< for the same and all that go on from here
  };

  [[nodiscard]] static bool allows(const Node& node, Rights right, std::string_view rest) noexcept;

  Node m_root;
};

}  // namespace motion::host::datalayer
