#include "host/motion/motion_ext.h"

#include "host/motion/runtime.h"

namespace motion::host {

core::IObjMgr* MotionExt::getObjMgr() const { return &m_runtime.objMgr(); }
core::ISectionMgr* MotionExt::getSectionMgr() const { return &m_runtime.sectionMgr(); }
core::job::IJobDataIDMgr* MotionExt::getJobDataIDMgr() const { return &m_runtime.jobDataIDMgr(); }
core::IObjFactory* MotionExt::getObjFactory() const { return &m_runtime.objFactory(); }
core::cmd::IGenericCmdFactory* MotionExt::getGenericCmdFactory() const { return &m_runtime.cmdFactory(); }
core::cmd::IGenericCmdOptionFactory* MotionExt::getGenericCmdOptionFactory() const { return &m_runtime.cmdOptionFactory(); }

}  // namespace motion::host
