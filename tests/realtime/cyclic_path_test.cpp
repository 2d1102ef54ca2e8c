// The cyclic path of the host with the real bundle: 100,000 cycles without an allocation, a lock or a system call.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <memory>
#include <string>

#include "host/datalayer/data_layer.h"
#include "host/observe/recorder.h"
#include "host/observe/run_record.h"
#include "host/observe/signal_watch.h"
#include "impl/debug_trace.h"
#include "impl/rt_signals.h"
#include "realtime/busy_host.h"
#include "support/realtime_guard.h"

namespace motion::test {
namespace {

using core::cmd::CmdState;
using testing::AnyOf;
using testing::Contains;
using testing::Each;
using testing::HasSubstr;
using testing::IsEmpty;

constexpr const char* UNIT = "motion.kavo";
constexpr const char* DOUBLE_SET_WARNING = "might be set by both";

/// Runs cycles with the guard armed during the cycle only.
void runGuarded(BusyHost& busy, RealtimeGuard& guard, int cycles) {
  for (int i = 0; i < cycles; ++i) {
    busy.betweenCycles();
    guard.arm();
    busy.runtime().cycle().run();
    guard.disarm();
  }
}

/// The run was worth something: everything was done often, and waits ended both at once and after idling.
void expectEverythingHappened(const EndTally& tally, std::uint64_t times) {
  for (const char* name : {"SetSignal", "ResetSignal", "WaitForSignal", "WaitForSignalReset", "Join", "MoveAbs", "MoveRel",
                           "MoveLin", "MoveCirc", "Dwell"}) {
    EXPECT_GE(tally.of(name, CmdState::DONE).ended, times) << name;
    EXPECT_EQ(tally.of(name, CmdState::FAILED).ended, 0U) << name;
  }
  for (const char* name : {"WaitForSignal", "WaitForSignalReset"}) {
    const EndTally::Entry done = tally.of(name, CmdState::DONE);
    EXPECT_GE(done.inFirstCycle, times / 10) << name << " whose condition held at once";
    EXPECT_GE(done.ended - done.inFirstCycle, times / 10) << name << " that idled";
  }
  EXPECT_GE(tally.of("WaitForSignal", CmdState::ABORTED).ended, times / 10);
  EXPECT_GE(tally.of("MoveAbs", CmdState::ABORTED).ended, times / 100);
  EXPECT_GE(tally.of("MoveLin", CmdState::ABORTED).ended, times / 10);
  EXPECT_GE(tally.of("Join", CmdState::ABORTED).ended, times / 10);
}

TEST(CyclicPath, NeitherAllocatesNorLocksNorCallsTheSystemWithTracesSwitchedOff) {
  BusyHost busy;
  ASSERT_EQ(busy.session().traceService().setLevels(UNIT, {false, false, false}), 0);
  RealtimeGuard guard;
  runGuarded(busy, guard, 100'000);
  EXPECT_TRUE(guard.isClean()) << guard.describe();
  EXPECT_EQ(busy.runtime().cycle().ended(), 100'000U);
  EXPECT_GE(busy.doubleSets(), 9'000U);
  expectEverythingHappened(busy.tally(), 1'000);
  EXPECT_THAT(busy.session().takeMessages(), IsEmpty());
}

TEST(CyclicPath, NeitherAllocatesNorLocksNorCallsTheSystemWithTracesOfTheTraceService) {
  BusyHost busy;
  RealtimeGuard guard;
  runGuarded(busy, guard, 2'000);
  EXPECT_TRUE(guard.isClean()) << guard.describe();
  const auto messages = busy.session().takeMessages();
  EXPECT_THAT(messages, Each(AnyOf(HasSubstr(DOUBLE_SET_WARNING), HasSubstr("ABORTED"))));
  EXPECT_THAT(messages, Contains(HasSubstr("ABORTED")));
  EXPECT_GE(messages.size(), 100U);
}

TEST(CyclicPath, NeitherAllocatesNorLocksNorCallsTheSystemWhileARecorderObserves) {
  BusyHost busy;
  host::observe::SignalWatch watch(busy.session().dataLayer());
  std::string problem;
  ASSERT_TRUE(watch.open(problem)) << problem;
  host::observe::RunRecord record;
  {
    host::observe::Recorder recorder(watch, record);
    recorder.attach(busy.runtime().objMgr().objects());
    busy.runtime().preparation().setListener(&recorder);
    busy.runtime().cycle().setObserver(&recorder);
    RealtimeGuard guard;
    std::size_t events = 0;
    for (int i = 0; i < 5'000; ++i) {
      runGuarded(busy, guard, 1);
      events += recorder.drain();
    }
    EXPECT_TRUE(guard.isClean()) << guard.describe();
    EXPECT_GE(events, 5'000U);
    busy.runtime().stopCommands();
    busy.runtime().preparation().setListener(nullptr);
    busy.runtime().cycle().setObserver(nullptr);
    for (const auto& object : busy.runtime().objMgr().objects()) {
      object->setEvents(nullptr);
    }
  }
  watch.close();
}

TEST(CyclicPath, TheGuardSeesIntoTheBundle) {
  OpenSession open(0.001);
  RealtimeGuard guard;
  guard.arm();
  const bool isSet = open.setSignal(1);
  guard.disarm();
  EXPECT_TRUE(isSet);
  EXPECT_EQ(guard.count(Violation::LOCK), 1U) << guard.describe();
  EXPECT_EQ(guard.count(Violation::ALLOCATION), 0U) << guard.describe();
  EXPECT_THAT(guard.describe(), HasSubstr("libmotion_kavo.so"));

  RealtimeGuard creation;
  core::job::IJobObject* job = nullptr;
  creation.arm();
  const auto created = open.runtime().objFactory().createObj("ext_job_obj_wait_for_signal", 0, job);
  creation.disarm();
  const std::unique_ptr<core::job::IJobObject> owned(job);
  EXPECT_FALSE(core::isFailure(created));
  EXPECT_EQ(creation.count(Violation::ALLOCATION), 1U) << creation.describe();
}

TEST(CyclicPath, SignalAccessorsAndDisabledTracesNeitherAllocateNorLockNorCallTheSystem) {
  host::datalayer::DataLayer dataLayer;
  auto& signals = kavo::rt_data::RtSignals::getInstance();
  ASSERT_TRUE(signals.initialize(dataLayer));
  kavo::DebugTrace::setTraceEnablingState({false, false, false});
  RealtimeGuard guard;
  std::array<std::uint64_t, 2> seen{};
  bool allSucceeded = true;
  guard.arm();
  for (unsigned int i = 0; i < 100'000; ++i) {
    const unsigned int id = i % kavo::rt_data::RtSignals::getNrOfSignals();
    bool value = false;
    std::uint8_t counter = 0;
    allSucceeded &= i % 3 == 0 ? signals.reset(id) : signals.set(id);
    allSucceeded &= signals.get(id, value, i % 2 == 0) && signals.getOutCounter(id, counter);
    ++seen[value ? 1 : 0];
    KAVO_TRACE(Warning, "%u", id);
    allSucceeded &= !signals.set(100);  // refused, with a trace that is switched off
  }
  guard.disarm();
  EXPECT_TRUE(guard.isClean()) << guard.describe();
  EXPECT_TRUE(allSucceeded);
  EXPECT_GE(seen[0], 10'000U);
  EXPECT_GE(seen[1], 10'000U);
  kavo::DebugTrace::setTraceEnablingState({});
  signals.terminate();
}

}  // namespace
}  // namespace motion::test
