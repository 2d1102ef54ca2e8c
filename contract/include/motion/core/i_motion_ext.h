// The extension interface: what one component may use of the motion runtime.
#pragma once

#include "motion/core/cmd/i_generic_cmd_factory.h"
#include "motion/core/cmd/i_generic_cmd_option_factory.h"
#include "motion/core/i_obj_factory.h"
#include "motion/core/i_obj_mgr.h"
#include "motion/core/i_section_mgr.h"
#include "motion/core/job/i_job_data_id_mgr.h"

namespace motion::core {

/// Made by the host for one component, which owns and deletes it. Every getter may answer null. The parts belong to the
/// runtime and outlive this object.
class IMotionExt {
 public:
  virtual ~IMotionExt() = default;

  /// The motion objects, by name. [any]
  [[nodiscard]] virtual IObjMgr* getObjMgr() const = 0;
  /// Sections, whose values jobs are sorted and data are found by. [framework]
  [[nodiscard]] virtual ISectionMgr* getSectionMgr() const = 0;
  /// Where the records of jobs get names that people can read. [framework]
  [[nodiscard]] virtual job::IJobDataIDMgr* getJobDataIDMgr() const = 0;
  /// Where prototypes of job objects are registered and shared helpers are found. [framework]
  [[nodiscard]] virtual IObjFactory* getObjFactory() const = 0;
  /// Where commands are registered. [framework]
  [[nodiscard]] virtual cmd::IGenericCmdFactory* getGenericCmdFactory() const = 0;
  /// Where command options are registered. [framework]
  [[nodiscard]] virtual cmd::IGenericCmdOptionFactory* getGenericCmdOptionFactory() const = 0;

 protected:
  IMotionExt() = default;
  IMotionExt(const IMotionExt&) = default;
  IMotionExt& operator=(const IMotionExt&) = default;
};

}  // namespace motion::core
