// Drives one component through its life: services in, init, start, stop, deinit, services out, destruction.
#include "host/framework/component_lifecycle.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <cstdio>
#include <exception>
#include <iterator>
#include <optional>
#include <utility>

namespace motion::host::framework {
namespace {

void report(const StepResult& result) {
  if (!result.isOk()) {
    fmt::print(stderr, "{}\n", result.text);
  }
}

}  // namespace

std::string_view toString(LifecycleState state) noexcept {
  switch (state) {
    case LifecycleState::LOADED:
      return "LOADED";
    case LifecycleState::SERVICES_SET:
      return "SERVICES_SET";
    case LifecycleState::INITIALISED:
      return "INITIALISED";
    case LifecycleState::STARTED:
      return "STARTED";
    case LifecycleState::STOPPED:
      return "STOPPED";
    case LifecycleState::DEINITIALISED:
      return "DEINITIALISED";
    case LifecycleState::SERVICES_REMOVED:
      return "SERVICES_REMOVED";
    case LifecycleState::LOST:
      return "LOST";
  }
  return "no lifecycle state";
}

ComponentLifecycle::ComponentLifecycle(LoadedBundle bundle) noexcept : m_bundle(std::move(bundle)) {}

ComponentLifecycle::~ComponentLifecycle() {
  try {
    takeRemainingSteps();
  } catch (const std::exception& exception) {
    // Only a lack of threads or memory leads here. A component that could not be stopped still runs threads of its own, so
    // its code must stay.
    fmt::print(stderr, "bundle '{}': not all steps of the shut-down could be taken: {}; the component stays loaded\n",
               m_bundle.directory().string(), exception.what());
    m_state = LifecycleState::LOST;
  }
  if (isLost()) {
    m_bundle.abandon();
  }
}

StepResult ComponentLifecycle::setServices(const Services& services, std::string bundlePath, std::string bundleName) {
  require("setServices", {LifecycleState::LOADED});
  m_texts = std::make_shared<const Texts>(Texts{std::move(bundlePath), std::move(bundleName)});
  StepResult result = giveAll(services);
  if (result.isOk()) {
    m_state = LifecycleState::SERVICES_SET;
  } else {
    report(takeBackAll());
  }
  return result;
}

StepResult ComponentLifecycle::init() {
  require("init", {LifecycleState::SERVICES_SET});
  StepResult result = call("init", [this] { return m_bundle.component().init(); });
  if (result.isOk()) {
    m_state = LifecycleState::INITIALISED;
  }
  return result;
}

StepResult ComponentLifecycle::start(std::chrono::milliseconds timeLimit) {
  require("start", {LifecycleState::INITIALISED, LifecycleState::STOPPED});
  m_timeLimit = timeLimit;
  StepResult result = callWithLimit("start", timeLimit, &Component::start);
  if (result.isOk()) {
    m_state = LifecycleState::STARTED;
  }
  return result;
}

StepResult ComponentLifecycle::stop() {
  require("stop", {LifecycleState::STARTED});
  StepResult result = callWithLimit("stop", m_timeLimit, &Component::stop);
  if (!isLost()) {
    m_state = LifecycleState::STOPPED;
  }
  return result;
}

StepResult ComponentLifecycle::deinit() {
  require("deinit", {LifecycleState::INITIALISED, LifecycleState::STOPPED});
  StepResult result = call("deinit", [this] { return m_bundle.component().deinit(); });
  m_state = LifecycleState::DEINITIALISED;
  return result;
}

StepResult ComponentLifecycle::removeServices() {
  require("removeServices", {LifecycleState::SERVICES_SET, LifecycleState::DEINITIALISED});
  StepResult result = takeBackAll();
  m_state = LifecycleState::SERVICES_REMOVED;
  return result;
}

void ComponentLifecycle::require(std::string_view step, std::initializer_list<LifecycleState> allowed) const {
  if (std::find(allowed.begin(), allowed.end(), m_state) != allowed.end()) {
    return;
  }
  std::vector<std::string_view> names;
  std::transform(allowed.begin(), allowed.end(), std::back_inserter(names), toString);
  throw WrongStateError(fmt::format("bundle '{}': {} was called in state {}, but it needs state {}",
                                    m_bundle.directory().string(), step, toString(m_state), fmt::join(names, " or ")));
}

StepResult ComponentLifecycle::giveAll(const Services& services) {
  StepResult result;
  static_cast<void>(give(result, services.trace, "addBundleTrace", &Component::addBundleTrace, "removeBundleTrace",
                         &Component::removeBundleTrace) &&
                    give(result, services.motionExtIF, "setMotionExtIF", &Component::setMotionExtIF, "removeMotionExtIF",
                         &Component::removeMotionExtIF) &&
                    give(result, services.dataLayerFactory, "setDataLayerFactory", &Component::setDataLayerFactory,
                         "removeDataLayerFactory", &Component::removeDataLayerFactory) &&
                    give(result, services.motionCmdIF, "setMotionCmdIF(MotionCmdIfT)", &Component::setMotionCmdIF,
                         "removeMotionCmdIF(MotionCmdIfT)", &Component::removeMotionCmdIF) &&
                    give(result, services.motionSysIF, "setMotionSysIF(MotionSysIfT)", &Component::setMotionSysIF,
                         "removeMotionSysIF(MotionSysIfT)", &Component::removeMotionSysIF) &&
                    give(result, services.motionCmdIF2, "setMotionCmdIF(MotionCmdIf2T)", &Component::setMotionCmdIF,
                         "removeMotionCmdIF(MotionCmdIf2T)", &Component::removeMotionCmdIF) &&
                    give(result, services.motionSysIF2, "setMotionSysIF(MotionSysIf2T)", &Component::setMotionSysIF,
                         "removeMotionSysIF(MotionSysIf2T)", &Component::removeMotionSysIF) &&
                    give(result, services.motionDataIF, "setMotionDataIF", &Component::setMotionDataIF, "removeMotionDataIF",
                         &Component::removeMotionDataIF) &&
                    giveText(result, m_texts->bundlePath, "setBundlePath", &Component::setBundlePath, "clrBundlePath",
                             &Component::clrBundlePath) &&
                    giveText(result, m_texts->bundleName, "setBundleName", &Component::setBundleName, "clrBundleName",
                             &Component::clrBundleName));
  return result;
}

template <typename Service>
bool ComponentLifecycle::give(StepResult& result, Service* service, std::string_view setName,
                              void (Component::*set)(Service*), std::string_view removeName,
                              void (Component::*remove)(Service*)) {
  if (service == nullptr) {
    return true;
  }
  // Noted before the call: a component that throws may have kept the pointer all the same.
  m_removals.push_back({removeName, [this, service, remove] { (m_bundle.component().*remove)(service); }});
  result = call(setName, [&] {
    (m_bundle.component().*set)(service);
    return 0;
  });
  return result.isOk();
}

bool ComponentLifecycle::giveText(StepResult& result, const std::string& text, std::string_view setName,
                                  void (Component::*set)(const char*), std::string_view clrName, void (Component::*clr)()) {
  m_removals.push_back({clrName, [this, clr] { (m_bundle.component().*clr)(); }});
  result = call(setName, [&] {
    (m_bundle.component().*set)(text.c_str());
    return 0;
  });
  return result.isOk();
}

StepResult ComponentLifecycle::takeBackAll() {
  StepResult first;
  while (!m_removals.empty()) {
    const Removal removal = std::move(m_removals.back());
    m_removals.pop_back();
    StepResult result = call(removal.operation, [&] {
      removal.call();
      return 0;
    });
    if (first.isOk()) {
      first = std::move(result);
    }
  }
  return first;
}

StepResult ComponentLifecycle::call(std::string_view operation, const ForeignCall& foreignCall) const {
  return judge(operation, callGuarded(foreignCall));
}

StepResult ComponentLifecycle::callWithLimit(std::string_view operation, std::chrono::milliseconds timeLimit,
                                             std::int32_t (Component::*lifecycleCall)()) {
  // The thread may outlive this object, so it holds what the component borrows and nothing of this object.
  const std::optional<CallEnd> end = callWithin(timeLimit, [component = &m_bundle.component(), texts = m_texts,
                                                            lifecycleCall] { return (component->*lifecycleCall)(); });
  if (end.has_value()) {
    return judge(operation, *end);
  }
  m_state = LifecycleState::LOST;
  const double seconds = std::chrono::duration<double>(timeLimit).count();
  return {
      StepOutcome::TIMED_OUT, 0,
      fmt::format("bundle '{}': {} did not return within {:g} s; the component can now be neither stopped nor unloaded, so "
                  "this process must end; look in the component's traces for what it waits for, or allow it more time",
                  m_bundle.directory().string(), operation, seconds)};
}

StepResult ComponentLifecycle::judge(std::string_view operation, const CallEnd& end) const {
  const std::string bundle = m_bundle.directory().string();
  if (!end.code.has_value()) {
    return {StepOutcome::THREW, 0,
            fmt::format("bundle '{}': {} threw: {}; an exception must not leave a component, so the bundle needs a repair",
                        bundle, operation, end.exception)};
  }
  if (*end.code != 0) {
    return {StepOutcome::REFUSED, *end.code,
            fmt::format("bundle '{}': {} failed with code {}; look in the component's traces for the cause", bundle,
                        operation, *end.code)};
  }
  return {};
}

void ComponentLifecycle::takeRemainingSteps() {
  if (m_state == LifecycleState::STARTED) {
    report(stop());
  }
  if (m_state == LifecycleState::INITIALISED || m_state == LifecycleState::STOPPED) {
    report(deinit());
  }
  if (m_state == LifecycleState::SERVICES_SET || m_state == LifecycleState::DEINITIALISED) {
    report(removeServices());
  }
}

}  // namespace motion::host::framework
