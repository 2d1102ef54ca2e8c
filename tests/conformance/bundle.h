// The bundle that is looked at.
#pragma once

#include <filesystem>
#include <stdexcept>

#include "motion/core/framework/i_motion_component.h"

namespace motion::conformance {

/// The shared library of a bundle, loaded for as long as the process runs: what it keeps in static objects ends with the
/// process, as in a host.
class Bundle {
 public:
  /// Throws std::runtime_error, which names place and cause, when there is no such library or no factory in it.
  explicit Bundle(std::filesystem::path directory);

  [[nodiscard]] const std::filesystem::path& directory() const noexcept { return m_directory; }
  [[nodiscard]] void* handle() const noexcept { return m_handle; }
  /// A new component. Throws a Mismatch when the factory makes none.
  [[nodiscard]] core::framework::IMotionComponent* makeComponent() const;

 private:
  std::filesystem::path m_directory;
  void* m_handle = nullptr;
  core::framework::FactoryFn m_factory = nullptr;
};

}  // namespace motion::conformance
