// Loads the shared library of a bundle and makes its component.
#include "host/framework/bundle_loader.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <system_error>
#include <utility>

#include "host/framework/foreign_call.h"

namespace motion::host::framework {
namespace {

using core::framework::FACTORY_NAME;
using core::framework::FactoryFn;
using core::framework::IMotionComponent;

[[nodiscard]] std::string lastLoaderError() {
  const char* text = ::dlerror();
  return text != nullptr ? text : "the dynamic loader gives no reason";
}

/// An error text, or an empty one when the library file is where it should be.
[[nodiscard]] std::string findPlaceError(const std::filesystem::path& directory) {
  std::error_code error;
  const std::filesystem::file_status status = std::filesystem::status(directory, error);
  if (status.type() == std::filesystem::file_type::not_found) {
    return fmt::format("bundle directory '{}' does not exist; give the directory that holds {} with --bundle",
                       directory.string(), LIBRARY_NAME);
  }
  if (error) {
    return fmt::format("bundle directory '{}' cannot be examined: {}; give a readable directory that holds {} with --bundle",
                       directory.string(), error.message(), LIBRARY_NAME);
  }
  if (!std::filesystem::is_directory(status)) {
    return fmt::format("bundle '{}' is not a directory; give the directory that holds {} with --bundle, not a file",
                       directory.string(), LIBRARY_NAME);
  }
  if (!std::filesystem::exists(directory / LIBRARY_NAME, error)) {
    return fmt::format(
        "bundle directory '{}' holds no {}; build the bundle, or give the directory of a built one with --bundle",
        directory.string(), LIBRARY_NAME);
  }
  return {};
}

struct MadeComponent {
  std::unique_ptr<IMotionComponent> component;
  std::string error;  ///< empty when there is a component
};

[[nodiscard]] MadeComponent makeComponent(void* library, const std::string& libraryPath) {
  const auto factory = reinterpret_cast<FactoryFn>(::dlsym(library, FACTORY_NAME));
  if (factory == nullptr) {
    return {nullptr, fmt::format("library '{}' exports no function '{}'; give a bundle whose library has this factory with "
                                 "--bundle",
                                 libraryPath, FACTORY_NAME)};
  }
  try {
    std::unique_ptr<IMotionComponent> component(factory());
    if (component == nullptr) {
      return {nullptr,
              fmt::format("function '{}' of library '{}' returned no component; give a bundle whose factory succeeds "
                          "with --bundle",
                          FACTORY_NAME, libraryPath)};
    }
    return {std::move(component), {}};
  } catch (...) {
    return {nullptr,
            fmt::format("function '{}' of library '{}' threw: {}; give a bundle whose factory succeeds with --bundle",
                        FACTORY_NAME, libraryPath, currentExceptionText())};
  }
}

}  // namespace

void LoadedBundle::LibraryCloser::operator()(void* handle) const noexcept {
  ::dlclose(handle);
}

LoadedBundle::LoadedBundle(Library library, std::unique_ptr<IMotionComponent> component,
                           std::filesystem::path directory) noexcept
    : m_directory(std::move(directory)), m_library(std::move(library)), m_component(std::move(component)) {}

void LoadedBundle::abandon() noexcept {
  static_cast<void>(m_component.release());
  static_cast<void>(m_library.release());
}

LoadResult loadBundle(const std::filesystem::path& directory) {
  if (std::string error = findPlaceError(directory); !error.empty()) {
    return {std::nullopt, std::move(error)};
  }
  const std::string libraryPath = (directory / LIBRARY_NAME).string();
  LoadedBundle::Library library(::dlopen(libraryPath.c_str(), RTLD_NOW | RTLD_LOCAL));
  if (library == nullptr) {
    return {std::nullopt,
            fmt::format("library '{}' could not be loaded: {}; give a bundle that was built for this machine, and "
                        "install the libraries that it needs",
                        libraryPath, lastLoaderError())};
  }
  MadeComponent made = makeComponent(library.get(), libraryPath);
  if (made.component == nullptr) {
    return {std::nullopt, std::move(made.error)};
  }
  return {LoadedBundle(std::move(library), std::move(made.component), directory), {}};
}

}  // namespace motion::host::framework
