// What the host knows of extension commands by their groups, names and parameters: who sets, resets, waits and joins.
#pragma once

#include "host/motion/cmd_factory.h"
#include "host/motion/obj_mgr.h"
#include "host/observe/sync_step.h"
#include "host/scenario/scenario.h"

namespace motion::host::run {

/// NONE for a command of no known group. Names in a group that no object has are left out; the component refuses them.
[[nodiscard]] observe::SyncStep syncStepOf(const CmdEntry& entry, const scenario::Value& parameters,
                                           const MotionObject& object, ObjMgr& objects);

/// Does the group of a join name its own object, and nobody else?
[[nodiscard]] bool namesOnlyItself(const scenario::Value& parameters, const std::string& object);

}  // namespace motion::host::run
