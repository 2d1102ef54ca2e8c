#include "host/door/routes.h"

namespace motion::host::door {

namespace {

/// Cuts the first level off, with the slash before it.
std::string_view takeLevel(std::string_view& path) noexcept {
  const std::size_t end = path.find('/', 1);
  const std::string_view level = path.substr(0, end);
  path.remove_prefix(level.size());
  return level;
}

}  // namespace

bool matches(std::string_view pattern, std::string_view path, std::string_view& parameter) noexcept {
  while (!pattern.empty() && !path.empty()) {
    const std::string_view wanted = takeLevel(pattern);
    const std::string_view level = takeLevel(path);
    if (wanted.starts_with("/{") && level.size() > 1) {
      parameter = level.substr(1);
    } else if (wanted != level) {
      return false;
    }
  }
  return pattern.empty() && path.empty();
}

}  // namespace motion::host::door
