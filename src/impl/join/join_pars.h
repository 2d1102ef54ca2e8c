// Parameter records of the command Join and of its job.
#pragma once

#include <string>
#include <vector>

#include "motion/core/i_obj.h"
#include "motion/core/job/i_job_data_id_mgr.h"
#include "motion/core/named_type.h"

namespace motion::kavo::cmd {

/// What the issuer of a command says.
struct CmdJoinParsT {
  std::vector<std::string> group;  ///< names of the objects to join with, in the order in which they were written
  bool syncStartNextCmd = false;   ///< wait until every member has its next command prepared
};
struct CmdJoinPars___t;
using CmdJoinPars = core::job::JobNamedType<CmdJoinParsT, CmdJoinPars___t>;

/// Announces CmdJoinPars and JoinJobPars. [framework]
void registerJoinDataTypes(core::job::IJobDataIDMgr& idMgr);

}  // namespace motion::kavo::cmd

namespace motion::kavo::job {

/// The objects of a join. Every member's command holds them in the same order: sorted by name.
using JoinGroup = std::vector<const core::IObj*>;

/// What the job reads.
struct JoinJobParsT {
  JoinGroup group;
  bool syncStartNextCmd = false;
};
struct JoinJobPars___t;
using JoinJobPars = core::job::JobNamedType<JoinJobParsT, JoinJobPars___t>;

}  // namespace motion::kavo::job
