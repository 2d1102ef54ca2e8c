// The targets by name.
#include "fuzz/targets.h"

#include <fmt/format.h>

#include <cstdio>
#include <cstdlib>

namespace motion::fuzz {

const std::vector<Target>& targets() {
  static const std::vector<Target> all = {
      {"parameters", &fuzzParameters}, {"nodes", &fuzzNodes}, {"scenario", &fuzzScenario}, {"door", &fuzzDoor}};
  return all;
}

void require(bool isKept, std::string_view promise) {
  if (!isKept) {
    fmt::print(stderr, "broken promise: {}\n", promise);
    std::abort();
  }
}

}  // namespace motion::fuzz
