// A component as the framework sees it.
#pragma once

#include <cstdint>

#include "comm/datalayer/i_data_layer_factory.h"
#include "common/log/trace/i_registration_real_time3.h"
#include "motion/core/records/motion_cmd_if.h"
#include "motion/core/records/motion_data_if.h"
#include "motion/core/records/motion_extension_if.h"
#include "motion/core/records/motion_sys_if.h"

namespace motion::core::framework {

/// The framework calls every operation by slot, one call at a time. Order of a life: factory, services and bundle path and
/// name in any order, init, start, stop, deinit, removal of the services, destruction. The trace service may come and go at
/// any time. All pointers are borrowed from set to remove. Lifecycle calls return 0 on success.
class IMotionComponent {
 public:
  virtual ~IMotionComponent() = default;

  virtual std::int32_t init() = 0;                                                                ///< [framework]
  virtual std::int32_t start() = 0;                                                               ///< [framework]
  virtual std::int32_t stop() = 0;                                                                ///< [framework]
  virtual std::int32_t deinit() = 0;                                                              ///< [framework]
  virtual void setMotionExtIF(const MotionExtensionIfT* motionExtIF) = 0;                         ///< [framework]
  virtual void removeMotionExtIF(const MotionExtensionIfT* motionExtIF) = 0;                      ///< [framework]
  virtual void setDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) = 0;     ///< [framework]
  virtual void removeDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) = 0;  ///< [framework]
  virtual void setMotionCmdIF(const MotionCmdIfT* motionCmdIF) = 0;                               ///< [framework]
  virtual void removeMotionCmdIF(const MotionCmdIfT* motionCmdIF) = 0;                            ///< [framework]
  virtual void setMotionSysIF(const MotionSysIfT* motionSysIF) = 0;                               ///< [framework]
  virtual void removeMotionSysIF(const MotionSysIfT* motionSysIF) = 0;                            ///< [framework]
  virtual void setMotionCmdIF(const MotionCmdIf2T* motionCmdIF) = 0;                              ///< [framework]
  virtual void removeMotionCmdIF(const MotionCmdIf2T* motionCmdIF) = 0;                           ///< [framework]
  virtual void setMotionSysIF(const MotionSysIf2T* motionSysIF) = 0;                              ///< [framework]
  virtual void removeMotionSysIF(const MotionSysIf2T* motionSysIF) = 0;                           ///< [framework]
  virtual void setMotionDataIF(const MotionDataIfT* motionDataIF) = 0;                            ///< [framework]
  virtual void removeMotionDataIF(const MotionDataIfT* motionDataIF) = 0;                         ///< [framework]
  virtual void setBundlePath(const char* bundlePath) = 0;                                         ///< [framework]
  virtual void clrBundlePath() = 0;                                                               ///< [framework]
  virtual void setBundleName(const char* bundleName) = 0;                                         ///< [framework]
  virtual void clrBundleName() = 0;                                                               ///< [framework]
  virtual void addBundleTrace(common::log::trace::IRegistrationRealTime3* registration) = 0;      ///< [framework]
  virtual void removeBundleTrace(common::log::trace::IRegistrationRealTime3* registration) = 0;   ///< [framework]

 protected:
  IMotionComponent() = default;
  IMotionComponent(const IMotionComponent&) = default;
  IMotionComponent& operator=(const IMotionComponent&) = default;
};

/// Name of the one function that a bundle exports, with C linkage: a new component, owned by the framework.
inline constexpr const char* FACTORY_NAME = "createMotionKavoCmp";
using FactoryFn = IMotionComponent* (*)();

}  // namespace motion::core::framework
