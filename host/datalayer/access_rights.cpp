#include "host/datalayer/access_rights.h"

#include "host/datalayer/address.h"

namespace motion::host::datalayer {

void AccessRights::grant(std::string_view pattern, Rights rights) {
  if (!isPattern(pattern)) {
    return;
  }
  Node* node = &m_root;
  std::string_view level;
  while (takeLevel(pattern, level)) {
    if (level == ALL_LEVELS) {
      node->fromHere = static_cast<Rights>(node->fromHere | rights);
      return;
    }
    if (level != ONE_LEVEL) {
      node = &node->levels[std::string(level)];
    } else {
      if (node->anyLevel == nullptr) {
        node->anyLevel = std::make_unique<Node>();
      }
      node = node->anyLevel.get();
    }
  }
  node->here = static_cast<Rights>(node->here | rights);
}

bool AccessRights::allows(Right right, std::string_view address) const noexcept {
  return isAddress(address) && allows(m_root, static_cast<Rights>(right), address);
}

bool AccessRights::allows(const Node& node, Rights right, std::string_view rest) noexcept {
  if ((node.fromHere & right) != 0) {
    return true;
  }
  std::string_view level;
  if (!takeLevel(rest, level)) {
    return (node.here & right) != 0;
  }
  const auto found = node.levels.find(level);
  return (found != node.levels.end() && allows(found->second, right, rest)) ||
         (node.anyLevel != nullptr && allows(*node.anyLevel, right, rest));
}

}  // namespace motion::host::datalayer
