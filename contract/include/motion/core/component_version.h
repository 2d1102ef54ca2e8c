// What a component tells the host about itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace motion::core {

/// Filled by the component when it asks for its extension interface. The order of the fields is fixed.
struct ComponentVersionAdd {
  std::string componentName;            ///< the bundle's name, as the framework set it
  std::string applicationName;          ///< the product that the component belongs to
  std::uint32_t major = 0;              ///< raised by changes that break users
  std::uint32_t minor = 0;              ///< raised by new abilities
  std::uint32_t patch = 0;              ///< raised by repairs
  std::uint32_t build = 0;              ///< number of the build, 0 when nobody counts
  std::string branch;                   ///< line of development that was built, "unknown_branch" when not recorded
  std::string versionText;              ///< all of it as one text for people
  std::string commit;                   ///< state of the source that was built, "unknown_commit" when not recorded
  std::vector<std::string> additional;  ///< further remarks, one each; usually none
};

}  // namespace motion::core
