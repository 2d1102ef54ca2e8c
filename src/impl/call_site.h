// The place in the component's source that a trace or a diagnosis names.
#pragma once

#include <algorithm>
#include <cstddef>
#include <string_view>

namespace motion::kavo {

/// Path of a source file without its extension, as in "src/impl/signals": the same for a header and its source.
template <std::size_t SIZE>
struct UnitPath {
  /// Implicit, so that a string literal is a template argument.
  consteval UnitPath(const char (&file)[SIZE]) {  // NOLINT(google-explicit-constructor)
    const std::string_view path(file, SIZE - 1);
    const auto dot = path.rfind('.');
    const auto slash = path.rfind('/');
    const bool hasExtension = dot != std::string_view::npos && (slash == std::string_view::npos || dot > slash);
    std::copy_n(file, hasExtension ? dot : SIZE - 1, text);
  }

  char text[SIZE] = {};
};

/// The path as a text with static storage, made by the compiler.
template <UnitPath PATH>
inline constexpr const char* unitPath = PATH.text;

/// Where something is traced. Pieces that several commands share are given the site of the command that called them.
struct CallSite {
  const char* unit = "";
  const char* function = "";
  unsigned int line = 0;

  /// The same place, for an operation of it whose body is written elsewhere.
  [[nodiscard]] constexpr CallSite as(const char* operation) const noexcept { return {unit, operation, line}; }
};

}  // namespace motion::kavo

/// The place where this is written. Not for the inside of a lambda, whose function has no name of its own.
#define KAVO_HERE (::motion::kavo::CallSite{::motion::kavo::unitPath<__FILE__>, __func__, __LINE__})

/// The same outside of functions.
#define KAVO_SITE (::motion::kavo::CallSite{::motion::kavo::unitPath<__FILE__>, "", __LINE__})
