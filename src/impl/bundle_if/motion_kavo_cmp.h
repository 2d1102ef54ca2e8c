// The component: what the host's framework creates, gives its services, starts and stops.
#pragma once

#include <cstdint>
#include <memory>
#include <string>

#include "impl/call_site.h"
#include "motion/core/framework/i_motion_component.h"

namespace motion::kavo::bundle {

/// Services only arrive and leave here; all work begins in `start` and ends in `stop`, or earlier for what depends on a
/// service that leaves.
class MotionKavoCmp : public core::framework::IMotionComponent {
 public:
  /// Result of a `start` that failed; the cause is in the trace.
  static constexpr std::int32_t START_FAILED = 70001;

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

  /// Brings everything up; after a failure everything is down again. [framework]
  [[nodiscard]] bool bundleStart() noexcept;
  /// Takes everything down, in any state. Always true. [framework]
  bool bundleStop() noexcept;

 private:
  /// Makes an extension interface; the host may make one and report a failure all the same.
  [[nodiscard]] core::FctResult createMotionExt(std::unique_ptr<core::IMotionExt>& motionExt) const;
  /// Ends a bundleStart that failed at `site`; false.
  [[nodiscard]] bool failStart(const CallSite& site) noexcept;

  std::string m_bundlePath;
  std::string m_bundleName;
  const core::MotionCmdIfT* m_motionCmdIF = nullptr;
  const core::MotionSysIfT* m_motionSysIF = nullptr;
  const core::MotionCmdIf2T* m_motionCmdIF2 = nullptr;
  const core::MotionSysIf2T* m_motionSysIF2 = nullptr;
  const core::MotionDataIfT* m_motionDataIF = nullptr;
  comm::datalayer::IDataLayerFactory* m_datalayerFactory = nullptr;
  const core::MotionExtensionIfT* m_extIF = nullptr;
  std::unique_ptr<core::IMotionExt> m_motionExt;
};

}  // namespace motion::kavo::bundle

/// The factory that the library exports: a new component, owned by the caller; null when there is no memory. [framework]
extern "C" __attribute__((visibility("default"))) motion::core::framework::IMotionComponent* createMotionKavoCmp();
