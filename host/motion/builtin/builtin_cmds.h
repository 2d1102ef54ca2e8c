// The commands that motion objects of this host have by themselves: MoveAbs and MoveRel for axes, MoveLin and MoveCirc for
// kinematics, Dwell for all.
#pragma once

#include <vector>

#include "host/motion/cmd_factory.h"
#include "host/motion/job_data_id_mgr.h"
#include "host/motion/obj_factory.h"
#include "motion/core/named_type.h"

namespace motion::host::builtin {

struct DwellParsT {
  double time = 0.0;  ///< in the user's unit of time
};
struct DwellPars___t;
using DwellPars = core::job::JobNamedType<DwellParsT, DwellPars___t>;

/// Parameters of both moves, in the user's units.
struct AxisMoveParsT {
  double target = 0.0;  ///< position, or distance of a relative move
  double velocity = 0.0;
  double acceleration = 0.0;
};
struct AxisMovePars___t;
using AxisMovePars = core::job::JobNamedType<AxisMoveParsT, AxisMovePars___t>;

/// Parameters of both moves of a kinematics, in the user's units; points are x, y and z one after the other.
struct KinMoveParsT {
  std::vector<double> to;
  std::vector<double> via;
  double blending = 0.0;  ///< radius; 0 for an arc
  double velocity = 0.0;
  double acceleration = 0.0;
};
struct KinMovePars___t;
using KinMovePars = core::job::JobNamedType<KinMoveParsT, KinMovePars___t>;

/// Makes the commands known to the factories of a new runtime. Throws std::bad_alloc. [framework]
void registerCmds(GenericCmdFactory& cmdFactory, ObjFactory& objFactory, JobDataIDMgr& ids);

}  // namespace motion::host::builtin
