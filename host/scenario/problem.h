// What is wrong with a user's input, where, and what would be right.
#pragma once

#include <cstddef>
#include <string>
#include <vector>

namespace motion::host::scenario {

/// A place in a file; line and column count from 1, 0 = unknown.
struct Mark {
  std::size_t line = 0;
  std::size_t column = 0;
};

struct Problem {
  std::string file;
  Mark mark;
  std::string message;   ///< names the offending word
  std::string remedy;    ///< what would be right; may be empty
  bool warning = false;  ///< the input can be used all the same

  /// "file:line:column: message; remedy"
  [[nodiscard]] std::string text() const;
};

using Problems = std::vector<Problem>;

}  // namespace motion::host::scenario
