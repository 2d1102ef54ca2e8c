// A component as the framework sees it.
#pragma once

#include <cstdint>

#include "comm/datalayer/i_data_layer_factory.h"
#include "common/log/trace/i_registration_real_time3.h"
#include "motion/core/records/motion_cmd_if.h"
#include "motion/core/records/motion_data_if.h"
#include "motion/core/records/motion_extension_if.h"
#include "motion/core/records/motion_sys_if.h"

/// How a framework gets a component and drives its life.
namespace motion::core::framework {

/// What a bundle brings. The framework calls every operation by slot, one call at a time. Order of a life: factory, services
/// and bundle path and name in any order, init, start, stop, deinit, removal of the services, destruction. The trace service
/// may come and go at any time. All pointers are borrowed from set to remove. Lifecycle calls return 0 on success.
class IMotionComponent {
 public:
  virtual ~IMotionComponent() = default;

  /// Prepares what needs no service. When it fails, neither start nor deinit follows. [framework]
  virtual std::int32_t init() = 0;
  /// Gets the extension interface, registers commands, options and nodes, and publishes functions in the records. Every
  /// service but the trace service must be there. When it fails, nothing of it stays, and deinit follows. [framework]
  virtual std::int32_t start() = 0;
  /// Takes back all that start did. The host has ended every command by then, as their code goes with the component.
  /// After it start may follow again. [framework]
  virtual std::int32_t stop() = 0;
  /// Undoes init; only removals follow. [framework]
  virtual std::int32_t deinit() = 0;
  /// The record with the factory of the extension interface; without it start fails. [framework]
  virtual void setMotionExtIF(const MotionExtensionIfT* motionExtIF) = 0;
  /// The record is about to go; the argument is the one of the set call, here as in all removals. [framework]
  virtual void removeMotionExtIF(const MotionExtensionIfT* motionExtIF) = 0;
  /// The data layer, for provider and memories. [framework]
  virtual void setDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) = 0;
  /// The data layer is about to go; a component that still runs gives back what it made with it. [framework]
  virtual void removeDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) = 0;
  /// The older record of command functions, in which the component writes its own fields at start. [framework]
  virtual void setMotionCmdIF(const MotionCmdIfT* motionCmdIF) = 0;
  /// The older record of command functions is about to go; the component clears its fields and withdraws its commands.
  /// [framework]
  virtual void removeMotionCmdIF(const MotionCmdIfT* motionCmdIF) = 0;
  /// The older record of system functions, in which the component writes its own fields at start. [framework]
  virtual void setMotionSysIF(const MotionSysIfT* motionSysIF) = 0;
  /// The older record of system functions is about to go; the component clears its fields. [framework]
  virtual void removeMotionSysIF(const MotionSysIfT* motionSysIF) = 0;
  /// The current record of command functions; a host gives both, and both are filled at start. [framework]
  virtual void setMotionCmdIF(const MotionCmdIf2T* motionCmdIF) = 0;
  /// The current record of command functions is about to go; as with the older one. [framework]
  virtual void removeMotionCmdIF(const MotionCmdIf2T* motionCmdIF) = 0;
  /// The current record of system functions; a host gives both, and both are filled at start. [framework]
  virtual void setMotionSysIF(const MotionSysIf2T* motionSysIF) = 0;
  /// The current record of system functions is about to go; as with the older one. [framework]
  virtual void removeMotionSysIF(const MotionSysIf2T* motionSysIF) = 0;
  /// Functions that tell where motion objects are. Start asks for it like for the others. [framework]
  virtual void setMotionDataIF(const MotionDataIfT* motionDataIF) = 0;
  /// The data functions are about to go. [framework]
  virtual void removeMotionDataIF(const MotionDataIfT* motionDataIF) = 0;
  /// Folder of the bundle, where the binary schemas lie in "bfbs"; copied, and null is refused. [framework]
  virtual void setBundlePath(const char* bundlePath) = 0;
  /// Forgets the folder. [framework]
  virtual void clrBundlePath() = 0;
  /// Name under which the component presents itself to the host; copied, and null is refused. [framework]
  virtual void setBundleName(const char* bundleName) = 0;
  /// Forgets the name. [framework]
  virtual void clrBundleName() = 0;
  /// A trace service has come: traces go there from now on. [framework]
  virtual void addBundleTrace(common::log::trace::IRegistrationRealTime3* registration) = 0;
  /// The trace service is about to go: traces go to the component's own sink again. [framework]
  virtual void removeBundleTrace(common::log::trace::IRegistrationRealTime3* registration) = 0;

 protected:
  IMotionComponent() = default;
  IMotionComponent(const IMotionComponent&) = default;
  IMotionComponent& operator=(const IMotionComponent&) = default;
};

/// Name of the one function that a bundle exports, with C linkage: a new component, owned by the framework.
inline constexpr const char* FACTORY_NAME = "createMotionKavoCmp";
/// Type of that function. It takes nothing and returns null when the component could not be made. [framework]
using FactoryFn = IMotionComponent* (*)();

}  // namespace motion::core::framework
