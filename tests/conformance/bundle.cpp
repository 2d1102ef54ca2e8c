// The bundle that is looked at.
#include "conformance/bundle.h"

#include <dlfcn.h>
#include <fmt/format.h>

#include <utility>

#include "conformance/expect.h"

namespace motion::conformance {

using core::framework::FACTORY_NAME;

Bundle::Bundle(std::filesystem::path directory) : m_directory(std::move(directory)) {
  const auto library = m_directory / "libmotion_kavo.so";
  m_handle = dlopen(library.c_str(), RTLD_NOW | RTLD_LOCAL);
  if (m_handle == nullptr) {
    throw std::runtime_error(fmt::format("{}: cannot be loaded: {}", library.string(), dlerror()));
  }
  m_factory = reinterpret_cast<core::framework::FactoryFn>(dlsym(m_handle, FACTORY_NAME));
  if (m_factory == nullptr) {
    throw std::runtime_error(fmt::format("{}: does not export {}", library.string(), FACTORY_NAME));
  }
}

core::framework::IMotionComponent* Bundle::makeComponent() const {
  auto* const component = m_factory();
  expectNotNull(fmt::format("the component that {} makes", FACTORY_NAME), component != nullptr);
  return component;
}

}  // namespace motion::conformance
