// Signals in JSON, as the door shows them.
#pragma once

#include <cstdint>
#include <nlohmann/json.hpp>
#include <string>

#include "host/door/live_run.h"

namespace motion::host::door {

/// Without line breaks; bytes that are no UTF-8 are replaced.
[[nodiscard]] inline std::string toText(const nlohmann::ordered_json& json) {
  return json.dump(-1, ' ', false, nlohmann::ordered_json::error_handler_t::replace);
}

[[nodiscard]] inline nlohmann::ordered_json signalJson(const RunFacts& facts, std::uint32_t signal, bool value) {
  const bool isNamed = signal < facts.signalNames.size() && !facts.signalNames[signal].empty();
  return {{"id", signal},
          {"name", isNamed ? nlohmann::ordered_json(facts.signalNames[signal]) : nlohmann::ordered_json(nullptr)},
          {"value", value}};
}

}  // namespace motion::host::door
