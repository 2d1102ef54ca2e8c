// The name of the snap that the process runs in.
#include "log_trace/snap_name.h"

#include <cstdlib>

namespace common::log {

// The fallback is short enough to live inside the string object, so making it cannot fail.
SnapName::SnapName() noexcept : m_name("unknownSnap") {
  const char* const value = std::getenv("SNAP_NAME");
  if (value == nullptr) {
    return;
  }
  try {
    m_name = value;
  } catch (...) {
    // The fallback stays: an assignment that fails leaves the string as it was.
  }
}

}  // namespace common::log
