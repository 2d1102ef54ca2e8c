// The extension interface that one component gets of a runtime.
#pragma once

#include "motion/core/i_motion_ext.h"

namespace motion::host {

class Runtime;

class MotionExt : public core::IMotionExt {
 public:
  explicit MotionExt(Runtime& runtime) : m_runtime(runtime) {}

  [[nodiscard]] core::IObjMgr* getObjMgr() const override;
  [[nodiscard]] core::ISectionMgr* getSectionMgr() const override;
  [[nodiscard]] core::job::IJobDataIDMgr* getJobDataIDMgr() const override;
  [[nodiscard]] core::IObjFactory* getObjFactory() const override;
  [[nodiscard]] core::cmd::IGenericCmdFactory* getGenericCmdFactory() const override;
  [[nodiscard]] core::cmd::IGenericCmdOptionFactory* getGenericCmdOptionFactory() const override;

 private:
  Runtime& m_runtime;
};

}  // namespace motion::host
