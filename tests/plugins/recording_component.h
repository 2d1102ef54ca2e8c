// The shared base of the test bundles: a component that does nothing well, and writes down who called it with what.
#pragma once

#include <string>

#include "motion/core/framework/i_motion_component.h"

namespace motion::test {

/// Appends one line per call to the file that the environment variable KAVO_TEST_CALLS names, if there is one: the operation
/// and its argument, as in "setMotionExtIF 0x7ffd10" or "setBundleName robot cell". Bundles override what they spoil.
class RecordingComponent : public core::framework::IMotionComponent {
 public:
  RecordingComponent();
  ~RecordingComponent() override;
  RecordingComponent(const RecordingComponent&) = delete;
  RecordingComponent& operator=(const RecordingComponent&) = delete;

  std::int32_t init() override;
  std::int32_t start() override;
  std::int32_t stop() override;
  std::int32_t deinit() override;
  void setMotionExtIF(const core::MotionExtensionIfT* motionExtIF) override;
  void removeMotionExtIF(const core::MotionExtensionIfT* motionExtIF) override;
  void setDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) override;
  void removeDataLayerFactory(comm::datalayer::IDataLayerFactory* dataLayerFactory) override;
  void setMotionCmdIF(const core::MotionCmdIfT* motionCmdIF) override;
  void removeMotionCmdIF(const core::MotionCmdIfT* motionCmdIF) override;
  void setMotionSysIF(const core::MotionSysIfT* motionSysIF) override;
  void removeMotionSysIF(const core::MotionSysIfT* motionSysIF) override;
  void setMotionCmdIF(const core::MotionCmdIf2T* motionCmdIF) override;
  void removeMotionCmdIF(const core::MotionCmdIf2T* motionCmdIF) override;
  void setMotionSysIF(const core::MotionSysIf2T* motionSysIF) override;
  void removeMotionSysIF(const core::MotionSysIf2T* motionSysIF) override;
  void setMotionDataIF(const core::MotionDataIfT* motionDataIF) override;
  void removeMotionDataIF(const core::MotionDataIfT* motionDataIF) override;
  void setBundlePath(const char* bundlePath) override;
  void clrBundlePath() override;
  void setBundleName(const char* bundleName) override;
  void clrBundleName() override;
  void addBundleTrace(common::log::trace::IRegistrationRealTime3* registration) override;
  void removeBundleTrace(common::log::trace::IRegistrationRealTime3* registration) override;
};

}  // namespace motion::test

/// Defines the factory of a bundle.
#define KAVO_TEST_FACTORY(COMPONENT)                                            \
  extern "C" motion::core::framework::IMotionComponent* createMotionKavoCmp() { \
    return new COMPONENT();                                                     \
  }
