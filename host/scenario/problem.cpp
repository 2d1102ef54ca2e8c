// Prints a problem the way compilers do, so that editors can jump to the place.
#include "host/scenario/problem.h"

#include <fmt/format.h>

namespace motion::host::scenario {

std::string Problem::text() const {
  std::string result = file;
  if (mark.line > 0) {
    result += mark.column > 0 ? fmt::format(":{}:{}", mark.line, mark.column) : fmt::format(":{}", mark.line);
  }
  result += result.empty() ? message : ": " + message;
  return remedy.empty() ? result : result + "; " + remedy;
}

}  // namespace motion::host::scenario
