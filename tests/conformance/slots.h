// Calls an operation by its place in an object's table, as a host does that knows only the order.
#pragma once

#include <cstddef>

namespace motion::conformance {

template <typename RESULT, typename... ARGUMENTS>
RESULT callSlot(void* object, std::size_t slot, ARGUMENTS... arguments) {
  void* const operation = (*static_cast<void***>(object))[slot];
  return reinterpret_cast<RESULT (*)(void*, ARGUMENTS...)>(operation)(object, arguments...);
}

}  // namespace motion::conformance
