// One trace entry on its way from a unit to the writers.
#include "host/trace/trace_entry.h"

#include <cstring>

namespace motion::host::trace {

bool copyText(std::span<char> target, const char* source) noexcept {
  const char* const text = source != nullptr ? source : "";
  const std::size_t length = ::strnlen(text, target.size());
  const bool isCut = length == target.size();
  const std::size_t kept = isCut ? length - 1 : length;
  std::memcpy(target.data(), text, kept);
  target[kept] = '\0';
  return isCut;
}

}  // namespace motion::host::trace
