// What a component tells the host about itself.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace motion::core {

/// Filled by the component when it asks for its extension interface. The order of the fields is fixed.
struct ComponentVersionAdd {
  std::string componentName;
  std::string applicationName;
  std::uint32_t major = 0;
  std::uint32_t minor = 0;
  std::uint32_t patch = 0;
  std::uint32_t build = 0;
  std::string branch;
  std::string versionText;
  std::string commit;
  std::vector<std::string> additional;
};

}  // namespace motion::core
