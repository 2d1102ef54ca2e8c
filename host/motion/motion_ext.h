// The extension interface that one component gets of a runtime.
#pragma once

#include "motion/core/i_motion_ext.h"

namespace motion::host {

class Runtime;

class MotionExt : public core::IMotionExt {
 public:
  explicit MotionExt(Runtime& runtime) : m_runtime(runtime) {}

  [[nodiscard]] core::IObjMgr* getObjMgr() const noexcept override;
  [[nodiscard]] core::ISectionMgr* getSectionMgr() const noexcept override;
  [[nodiscard]] core::job::IJobDataIDMgr* getJobDataIDMgr() const noexcept override;
  [[nodiscard]] core::IObjFactory* getObjFactory() const noexcept override;
  [[nodiscard]] core::cmd::IGenericCmdFactory* getGenericCmdFactory() const noexcept override;
  [[nodiscard]] core::cmd::IGenericCmdOptionFactory* getGenericCmdOptionFactory() const noexcept override;

 private:
  Runtime& m_runtime;
};

}  // namespace motion::host
