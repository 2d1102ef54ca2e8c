// Holds JSON against the schemas of an OpenAPI document.
#pragma once

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

namespace motion::host::door {

/// What does not match, one text each; a keyword that is not checked here counts as a mismatch.
[[nodiscard]] std::vector<std::string> mismatches(const nlohmann::json& document, const nlohmann::json& schema,
                                                  const nlohmann::json& value, const std::string& place = "$");
/// The element of the document that a "$ref" stands for; other elements stand for themselves.
[[nodiscard]] const nlohmann::json& resolve(const nlohmann::json& document, const nlohmann::json& element);

}  // namespace motion::host::door
