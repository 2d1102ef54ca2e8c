// What the door offers, and at which paths.
#pragma once

#include <array>
#include <string_view>

namespace motion::host::door {

enum class Operation { ABOUT, LIST_SIGNALS, GET_SIGNAL, PUT_SIGNAL, WATCH, WHY, DESCRIBE };

/// A level of the path in braces stands for any one that is not empty.
struct Route {
  std::string_view method;
  std::string_view path;
  Operation operation;
};

inline constexpr std::array ROUTES{
    Route{"GET", "/v1", Operation::ABOUT},
    Route{"GET", "/v1/signals", Operation::LIST_SIGNALS},
    Route{"GET", "/v1/signals/{id}", Operation::GET_SIGNAL},
    Route{"PUT", "/v1/signals/{id}", Operation::PUT_SIGNAL},
    Route{"GET", "/v1/events", Operation::WATCH},
    Route{"GET", "/v1/why", Operation::WHY},
    Route{"GET", "/v1/openapi.json", Operation::DESCRIBE},
};

/// True when the path is one that the pattern describes; `parameter` is then what stands for the braces, if there are any.
[[nodiscard]] bool matches(std::string_view pattern, std::string_view path, std::string_view& parameter) noexcept;

}  // namespace motion::host::door
