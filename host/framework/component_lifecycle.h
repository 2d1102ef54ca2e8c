// Drives one component through its life: services in, init, start, stop, deinit, services out, destruction.
#pragma once

#include <chrono>
#include <cstdint>
#include <functional>
#include <initializer_list>
#include <memory>
#include <stdexcept>
#include <string>
#include <string_view>
#include <vector>

#include "host/framework/bundle_loader.h"
#include "host/framework/foreign_call.h"

namespace motion::host::framework {

/// What a component is given. Borrowed; a null pointer means that the component does not get this service.
struct Services {
  common::log::trace::IRegistrationRealTime3* trace = nullptr;
  const core::MotionExtensionIfT* motionExtIF = nullptr;
  comm::datalayer::IDataLayerFactory* dataLayerFactory = nullptr;
  const core::MotionCmdIfT* motionCmdIF = nullptr;
  const core::MotionSysIfT* motionSysIF = nullptr;
  const core::MotionCmdIf2T* motionCmdIF2 = nullptr;
  const core::MotionSysIf2T* motionSysIF2 = nullptr;
  const core::MotionDataIfT* motionDataIF = nullptr;
};

/// Where a component is in its life, in order; LOST is the end of one in which a call never came back.
enum class LifecycleState { LOADED, SERVICES_SET, INITIALISED, STARTED, STOPPED, DEINITIALISED, SERVICES_REMOVED, LOST };

/// The state's name as it is written here. [any]
[[nodiscard]] std::string_view toString(LifecycleState state) noexcept;

/// A step was asked for in a state that does not allow it: a mistake of the caller. The text names the step, the state and
/// the states that it needs.
class WrongStateError : public std::logic_error {
 public:
  using std::logic_error::logic_error;
};

/// How a step ended.
enum class StepOutcome { OK, REFUSED, THREW, TIMED_OUT };

struct StepResult {
  StepOutcome outcome = StepOutcome::OK;
  std::int32_t code = 0;  ///< what the component answered; other than 0 exactly when it refused
  std::string text;       ///< names bundle, operation, cause and remedy; empty when OK

  [[nodiscard]] bool isOk() const noexcept { return outcome == StepOutcome::OK; }
};

/// Owns a bundle and takes its component from step to step. All calls come from one thread at a time. No exception of the
/// component leaves a step; a step in a wrong state throws WrongStateError and does not reach the component.
///
/// | step           | from                       | OK               | refused or threw | timed out |
/// |----------------|----------------------------|------------------|------------------|-----------|
/// | setServices    | LOADED                     | SERVICES_SET     | LOADED           |           |
/// | init           | SERVICES_SET               | INITIALISED      | SERVICES_SET     |           |
/// | start          | INITIALISED, STOPPED       | STARTED          | unchanged        | LOST      |
/// | stop           | STARTED                    | STOPPED          | STOPPED          | LOST      |
/// | deinit         | INITIALISED, STOPPED       | DEINITIALISED    | DEINITIALISED    |           |
/// | removeServices | SERVICES_SET, DEINITIALISED| SERVICES_REMOVED | SERVICES_REMOVED |           |
///
/// Steps on the way down count as taken even if they fail, since there is no way back; their result still says so.
///
/// A lost component can be neither stopped nor unloaded, because a thread still runs in it: component and library stay until
/// the process ends, and everything that was given to the component must stay alive as long. The process should report the
/// failure, flush its output and end at once with the exit code of a bundle that could not be started, by std::_Exit: an
/// orderly exit would destroy static objects under the running thread.
class ComponentLifecycle {
 public:
  /// A start takes up to about 10 s while the component waits for its nodes to appear.
  static constexpr std::chrono::milliseconds DEFAULT_TIME_LIMIT = std::chrono::seconds(30);

  explicit ComponentLifecycle(LoadedBundle bundle) noexcept;
  ComponentLifecycle(const ComponentLifecycle&) = delete;
  ComponentLifecycle& operator=(const ComponentLifecycle&) = delete;
  /// Takes the remaining steps in order, then deletes the component and unloads the library. What goes wrong is written to
  /// stderr; a caller who wants to know takes the steps itself. Does nothing to a lost component. [framework]
  ~ComponentLifecycle();

  /// Hands over the trace service first, so that the traces of all that follows reach it, then the other services in slot
  /// order, bundle path and bundle name. The services must stay alive until removeServices or the destructor has returned.
  /// If the component throws, it is relieved of what it already has. [framework]
  [[nodiscard]] StepResult setServices(const Services& services, std::string bundlePath, std::string bundleName);
  [[nodiscard]] StepResult init();  ///< [framework]
  /// Starts on a thread of its own and gives up after `timeLimit`, which then is the limit of stop too. Throws
  /// std::system_error when no thread can be had; nothing has changed then. [framework]
  [[nodiscard]] StepResult start(std::chrono::milliseconds timeLimit = DEFAULT_TIME_LIMIT);
  /// As start, with the limit that start was given. [framework]
  [[nodiscard]] StepResult stop();
  [[nodiscard]] StepResult deinit();  ///< [framework]
  /// Takes everything back in the reverse order, the trace service last. Goes on after a failure and reports the first one.
  /// [framework]
  [[nodiscard]] StepResult removeServices();

  [[nodiscard]] LifecycleState state() const noexcept { return m_state; }                 ///< [framework]
  [[nodiscard]] bool isLost() const noexcept { return m_state == LifecycleState::LOST; }  ///< [framework]

 private:
  using Component = core::framework::IMotionComponent;

  /// How to take back what setServices gave.
  struct Removal {
    std::string_view operation;
    std::function<void()> call;
  };

  /// What the component borrows from this object; a call that never comes back keeps it alive.
  struct Texts {
    std::string bundlePath;
    std::string bundleName;
  };

  void require(std::string_view step, std::initializer_list<LifecycleState> allowed) const;
  [[nodiscard]] StepResult giveAll(const Services& services);
  template <typename Service>
  [[nodiscard]] bool give(StepResult& result, Service* service, std::string_view setName, void (Component::*set)(Service*),
                          std::string_view removeName, void (Component::*remove)(Service*));
  [[nodiscard]] bool giveText(StepResult& result, const std::string& text, std::string_view setName,
                              void (Component::*set)(const char*), std::string_view clrName, void (Component::*clr)());
  [[nodiscard]] StepResult takeBackAll();
  [[nodiscard]] StepResult call(std::string_view operation, const ForeignCall& foreignCall) const;
  [[nodiscard]] StepResult callWithLimit(std::string_view operation, std::chrono::milliseconds timeLimit,
                                         std::int32_t (Component::*lifecycleCall)());
  [[nodiscard]] StepResult judge(std::string_view operation, const CallEnd& end) const;
  void takeRemainingSteps();

  LoadedBundle m_bundle;
  LifecycleState m_state = LifecycleState::LOADED;
  std::chrono::milliseconds m_timeLimit = DEFAULT_TIME_LIMIT;
  std::shared_ptr<const Texts> m_texts;
  std::vector<Removal> m_removals;
};

}  // namespace motion::host::framework
