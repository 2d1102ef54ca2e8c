// The name of the snap that the process runs in.
#pragma once

#include <string>

namespace common::log {

/// Keeps the value that the environment variable "SNAP_NAME" had at construction, or "unknownSnap" when it was not set.
class SnapName {
 public:
  /// Falls back to "unknownSnap" when there is no memory for the value. [framework]
  SnapName() noexcept;

  /// The name; valid as long as this object. [any & real-time]
  [[nodiscard]] const char* get() const noexcept { return m_name.c_str(); }

 private:
  std::string m_name;
};

}  // namespace common::log
