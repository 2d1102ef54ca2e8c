// Fuzz target: the reader of scenario files.
#include <algorithm>
#include <string_view>

#include "fuzz/targets.h"
#include "host/scenario/scenario_reader.h"

namespace motion::fuzz {

void fuzzScenario(Bytes bytes) {
  const std::string_view text(reinterpret_cast<const char*>(bytes.data()), bytes.size());
  const auto read = host::scenario::readScenarioText(text, "fuzz.yaml");
  const bool isRefused = std::ranges::any_of(read.problems, [](const auto& problem) { return !problem.warning; });
  require(read.scenario.has_value() != isRefused, "a scenario is read exactly when nothing but warnings is said");
  for (const auto& problem : read.problems) {
    require(!problem.message.empty(), "each problem says something");
    require(!problem.text().empty(), "each problem can be printed");
  }
}

}  // namespace motion::fuzz
