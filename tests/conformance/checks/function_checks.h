// Checks that each published function of a kind has to pass.
#pragma once

#include <fmt/format.h>

#include <span>
#include <vector>

#include "conformance/check.h"

namespace motion::conformance {

template <typename FUNCTION>
struct FunctionCheck {
  const char* name;
  const char* sentence;  ///< behind the name of the function
  void (*run)(const Bundle&, const FUNCTION&);
};

template <typename FUNCTION>
void addFunctionChecks(Checks& checks, const std::vector<FUNCTION>& functions,
                       std::span<const FunctionCheck<FUNCTION>> bodies) {
  for (const auto& function : functions) {
    for (const auto& body : bodies) {
      checks.push_back({fmt::format("command-functions.{}-{}", function.name, body.name),
                        fmt::format("{} {}", function.name, body.sentence),
                        [run = body.run, function](const Bundle& bundle) { run(bundle, function); }});
    }
  }
}

}  // namespace motion::conformance
