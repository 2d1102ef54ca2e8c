// Records of switching conditions by hand.
#pragma once

#include "host/observe/run_record.h"
#include "sample_record.h"

namespace motion::host::observe {

/// The sample's run with one condition of B, in line 9, that was armed with B#1 in cycle 1.
inline RunRecord withTrigger(double preTriggerTime = 0.0) {
  RunRecord record = sampleRecord();
  TriggerRecord trigger;
  trigger.object = 1;
  trigger.line = 9;
  trigger.signal = 3;
  trigger.target = {0.1, 0.02, 0.0};
  trigger.radius = 0.001;
  trigger.preTriggerTime = preTriggerTime;
  trigger.carriers = {{1, 1}};
  record.triggers.push_back(trigger);
  return record;
}

/// A look of B#1, with the tool at x = 99 mm.
inline TriggerRecord::Look lookIn(std::uint64_t cycle, double distance, double toolDistance) {
  return {cycle, 1, {0.099, 0.02, 0.0}, distance, toolDistance};
}

}  // namespace motion::host::observe
