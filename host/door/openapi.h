// The description of the door for programs.
#pragma once

#include <string_view>

namespace motion::host::door {

/// The OpenAPI document, docs/openapi/kavo-v1.json as it was when the door was built.
[[nodiscard]] std::string_view openApiDocument() noexcept;

}  // namespace motion::host::door
