#include "host/motion/motion_ext.h"

#include "host/motion/runtime.h"

namespace motion::host {

core::IObjMgr* MotionExt::getObjMgr() const noexcept {
  return &m_runtime.objMgr();
}
core::ISectionMgr* MotionExt::getSectionMgr() const noexcept {
  return &m_runtime.sectionMgr();
}
core::job::IJobDataIDMgr* MotionExt::getJobDataIDMgr() const noexcept {
  return &m_runtime.jobDataIDMgr();
}
core::IObjFactory* MotionExt::getObjFactory() const noexcept {
  return &m_runtime.objFactory();
}
core::cmd::IGenericCmdFactory* MotionExt::getGenericCmdFactory() const noexcept {
  return &m_runtime.cmdFactory();
}
core::cmd::IGenericCmdOptionFactory* MotionExt::getGenericCmdOptionFactory() const noexcept {
  return &m_runtime.cmdOptionFactory();
}

}  // namespace motion::host
