// A small run, written by hand: A sets signal 3, B waits for it.
#pragma once

#include "host/motion/events.h"
#include "host/observe/run_record.h"

namespace motion::host::observe {

inline RunRecord sampleRecord() {
  using core::cmd::CmdState;
  RunRecord record;
  record.file = "sample.yaml";
  record.cycles = 30;
  record.signalNames.resize(100);
  record.signalNames[3] = "part ready";

  CmdRecord move;
  move.id = 1;
  move.object = 0;
  move.number = 1;
  move.name = "MoveAbs";
  move.parameters = "{to: 5}";
  move.line = 4;
  move.state = CmdState::DONE;
  move.buffered = move.prepared = move.active = move.motionBegan = 1;
  move.ended = 10;
  CmdRecord set = move;
  set.id = 2;
  set.number = 2;
  set.name = "SetSignal";
  set.parameters = "{signalId: 3}";
  set.motionBegan = 0;
  set.signal = 3;
  set.active = set.ended = 11;
  CmdRecord wait = move;
  wait.id = 3;
  wait.object = 1;
  wait.name = "WaitForSignal";
  wait.parameters = "{signalId: 3, autoReset: true}";
  wait.line = 7;
  wait.waits = true;
  wait.waitsFor = "signal 3 'part ready'";
  wait.signal = 3;
  wait.motionBegan = 0;
  wait.ended = 11;

  record.objects.push_back({"A", core::ObjectType::AXIS, {0.0}, {0.005}, {move, set}});
  record.objects.push_back({"B", core::ObjectType::KINEMATICS, {0.1, 0.0, -0.02}, {0.1, 0.25, 0.0}, {wait}});
  record.signals = {{11, 3, true, 0, 2}, {11, 3, false, 1, 1}};
  using Kind = StepRecord::Kind;
  record.steps = {{Kind::ACTIVE, 1, 0, 1, 0},      {Kind::MOTION_BEGAN, 1, 0, 1, 0}, {Kind::ACTIVE, 1, 1, 1, 0},
                  {Kind::DONE, 10, 0, 1, 0},       {Kind::ACTIVE, 11, 0, 2, 0},      {Kind::DONE, 11, 0, 2, 0},
                  {Kind::SIGNAL_SET, 11, 0, 2, 3}, {Kind::DONE, 11, 1, 1, 0},        {Kind::SIGNAL_RESET, 11, 1, 1, 3}};
  record.expectations = {{"at: end, signal: 3, value: false", 9, true, ""}};
  return record;
}

}  // namespace motion::host::observe
