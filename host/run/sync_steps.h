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

/// True when a join names no object at all.
[[nodiscard]] bool isGroupEmpty(const scenario::Value& parameters);

}  // namespace motion::host::run
