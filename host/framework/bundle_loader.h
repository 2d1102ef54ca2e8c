// Loads the shared library of a bundle and makes its component.
#pragma once

#include <filesystem>
#include <memory>
#include <optional>
#include <string>

#include "motion/core/framework/i_motion_component.h"

namespace motion::host::framework {

/// The library that every bundle directory holds.
inline constexpr const char* LIBRARY_NAME = "libmotion_kavo.so";

/// A loaded library and its one component. The destructor deletes the component, then unloads the library.
class LoadedBundle {
 public:
  /// Closes a handle of dlopen.
  struct LibraryCloser {
    void operator()(void* handle) const noexcept;
  };
  using Library = std::unique_ptr<void, LibraryCloser>;

  /// `component` comes from `library` and must not be null. [framework]
  LoadedBundle(Library library, std::unique_ptr<core::framework::IMotionComponent> component,
               std::filesystem::path directory) noexcept;
  LoadedBundle(LoadedBundle&&) noexcept = default;
  LoadedBundle& operator=(LoadedBundle&&) = delete;
  ~LoadedBundle() = default;

  [[nodiscard]] core::framework::IMotionComponent& component() const noexcept { return *m_component; }  ///< [framework]
  /// The directory as it was given to loadBundle. [any]
  [[nodiscard]] const std::filesystem::path& directory() const noexcept { return m_directory; }

  /// Leaves component and library as they are until the process ends, for a component in which a call still runs. Afterwards
  /// component() must not be used. [framework]
  void abandon() noexcept;

 private:
  std::filesystem::path m_directory;
  Library m_library;  // before the component, so that it is unloaded after the component's destruction
  std::unique_ptr<core::framework::IMotionComponent> m_component;
};

/// Either a bundle or an error.
struct LoadResult {
  std::optional<LoadedBundle> bundle;
  std::string error;  ///< names the place and the remedy; empty when there is a bundle
};

/// Loads `directory`/libmotion_kavo.so and calls its factory. Whatever goes wrong, also an exception of the factory, is
/// reported in the result, and the library is then unloaded again. [framework]
[[nodiscard]] LoadResult loadBundle(const std::filesystem::path& directory);

}  // namespace motion::host::framework
