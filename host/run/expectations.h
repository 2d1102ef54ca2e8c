// Judges whether a run did what its scenario expects.
#pragma once

#include <cstdint>
#include <vector>

#include "host/motion/obj_mgr.h"
#include "host/observe/recorder.h"
#include "host/observe/run_record.h"
#include "host/scenario/scenario.h"

namespace motion::host::run {

/// Number of the first cycle that begins at or after a time [s] of the scenario's clock; the first cycle begins at 0.
[[nodiscard]] std::uint64_t firstCycleFrom(double time, double cycleTime);

/// What the cyclic thread has to note for the expectations about moments before the end, in ascending order of cycles.
[[nodiscard]] std::vector<observe::Probe> probesFor(const scenario::Scenario& scenario, const ObjMgr& objects);

/// Writes the verdicts into the record. `finalSignals` are the values after the last cycle.
void judge(const scenario::Scenario& scenario, const std::vector<observe::Probe>& probes, const ObjMgr& objects,
           const observe::SignalWatch& finalSignals, observe::RunRecord& record);

}  // namespace motion::host::run
