#include "host/observe/recorder.h"

#include <gtest/gtest.h>

#include "host/datalayer/data_layer.h"
#include "host/motion/builtin/builtin_cmds.h"
#include "host/motion/runtime.h"
#include "support/fake_allocation.h"

namespace motion::host::observe {
namespace {

using core::cmd::CmdState;

/// A runtime with one axis whose run is recorded; no component, so no signals.
class RecorderTest : public testing::Test {
 protected:
  RecorderTest() {
    m_axis = m_runtime.addObject("A", core::ObjectType::AXIS, {0.1, 0.0, 0.0});
    sut.attach(m_runtime.objMgr().objects());
    m_runtime.cycle().setObserver(&sut);
    m_runtime.preparation().setListener(&sut);
  }
  ~RecorderTest() override {
    m_runtime.stopCommands();
    m_runtime.preparation().setListener(nullptr);
  }

  unsigned long dwell(double time) {
    unsigned long id = 0;
    const builtin::DwellPars values(builtin::DwellParsT{time});
    EXPECT_EQ(m_runtime.addCmd({}, "A", "Dwell", values, 1, &id), core::FctResult::Okay);
    return id;
  }

  void steps(int count) {
    for (int i = 0; i < count; ++i) {
      m_runtime.step();
    }
  }

  const std::vector<CmdRecord>& commands() const { return m_record.objects.at(0).commands; }

  datalayer::DataLayer m_dataLayer;
  SignalWatch m_watch{m_dataLayer};
  RunRecord m_record;
  Runtime m_runtime{RuntimeConfig{0.001, 8}};
  MotionObject* m_axis = nullptr;
  Recorder sut{m_watch, m_record};
};

TEST_F(RecorderTest, KnowsTheObjects) {
  ASSERT_EQ(m_record.objects.size(), 1U);
  EXPECT_EQ(m_record.objects[0].name, "A");
  EXPECT_EQ(m_record.objects[0].startPosition, (Point{0.1, 0.0, 0.0}));
}

TEST_F(RecorderTest, FillsTheProgramInTheOrderOfIssuing) {
  sut.setProgram(
      0, {{"Dwell", "{time: 1}", {"X {a: 1}", "Y"}, 5, false, "", {}, {}}, {"Dwell", "{time: 2}", {}, 6, true, "x", 3, {}}});
  const auto first = dwell(0.002);
  sut.drain();
  ASSERT_EQ(commands().size(), 2U);
  EXPECT_EQ(commands()[0].id, first);
  EXPECT_EQ(commands()[0].state, CmdState::BUFFERED);
  EXPECT_EQ(commands()[0].line, 5U);
  EXPECT_EQ(commands()[0].parameters, "{time: 1}");
  EXPECT_EQ(commands()[1].state, CmdState::CREATED);
  EXPECT_EQ(commands()[1].number, 2U);
  EXPECT_EQ(commands()[1].signal, 3U);
  EXPECT_EQ(commands()[0].options, (std::vector<std::string>{"X {a: 1}", "Y"}));
  EXPECT_TRUE(commands()[1].options.empty());
  EXPECT_TRUE(commands()[1].waits);
}

TEST_F(RecorderTest, NotesEveryStateWithItsCycle) {
  dwell(0.003);
  steps(5);
  EXPECT_GT(sut.drain(), 0U);
  ASSERT_EQ(commands().size(), 1U);
  EXPECT_EQ(commands()[0].name, "Dwell");
  EXPECT_EQ(commands()[0].buffered, 1U);
  EXPECT_EQ(commands()[0].prepared, 1U);
  EXPECT_EQ(commands()[0].active, 1U);
  EXPECT_EQ(commands()[0].ended, 3U);
  EXPECT_EQ(commands()[0].state, CmdState::DONE);
  ASSERT_EQ(m_record.steps.size(), 2U);
  EXPECT_EQ(m_record.steps[0].kind, StepRecord::Kind::ACTIVE);
  EXPECT_EQ(m_record.steps[1].kind, StepRecord::Kind::DONE);
  EXPECT_EQ(m_record.steps[1].cycle, 3U);
  EXPECT_EQ(sut.lastEventCycle(), 3U);
  EXPECT_EQ(sut.drain(), 0U);
}

TEST_F(RecorderTest, NotesAnAbortOfTheCurrentAndOfWaitingCommands) {
  dwell(1);
  dwell(1);
  steps(2);
  m_axis->abortAll();
  steps(1);
  sut.drain();
  ASSERT_EQ(commands().size(), 2U);
  EXPECT_EQ(commands()[0].state, CmdState::ABORTED);
  EXPECT_EQ(commands()[0].ended, 3U);
  EXPECT_EQ(commands()[1].state, CmdState::ABORTED);
  EXPECT_EQ(commands()[1].active, 0U);
}

TEST_F(RecorderTest, NotesACommandThatNeverReachedTheCycle) {
  dwell(1);
  m_axis->abortAll();
  m_runtime.preparation().prepareAll();
  sut.drain();
  ASSERT_EQ(commands().size(), 1U);
  EXPECT_EQ(commands()[0].state, CmdState::ABORTED);
  EXPECT_EQ(commands()[0].ended, 1U);
  ASSERT_EQ(m_record.steps.size(), 1U);
  EXPECT_EQ(m_record.steps[0].kind, StepRecord::Kind::ABORTED);
}

TEST_F(RecorderTest, NotesWhenAMotionBegins) {
  unsigned long id = 0;
  const builtin::AxisMovePars values(builtin::AxisMoveParsT{200, 100, 1000});
  ASSERT_EQ(m_runtime.addCmd({}, "A", "MoveAbs", values, 1, &id), core::FctResult::Okay);
  steps(3);
  sut.drain();
  EXPECT_EQ(commands().at(0).motionBegan, 1U);
}

TEST_F(RecorderTest, TakesProbesInTheirCycle) {
  unsigned long id = 0;
  const builtin::AxisMovePars values(builtin::AxisMoveParsT{101, 1000, 1e9});
  ASSERT_EQ(m_runtime.addCmd({}, "A", "MoveAbs", values, 1, &id), core::FctResult::Okay);
  Probe early;
  early.cycle = 1;
  early.isSignal = false;
  early.object = m_axis;
  Probe late = early;
  late.cycle = 3;
  Probe never = early;
  never.cycle = 9;
  sut.setProbes({early, late, never});
  steps(5);
  EXPECT_TRUE(sut.probes()[0].taken);
  EXPECT_GT(sut.probes()[0].position[0], 0.1);
  EXPECT_TRUE(sut.probes()[1].taken);
  EXPECT_NEAR(sut.probes()[1].position[0], 0.101, 1e-12);
  EXPECT_LT(sut.probes()[0].position, sut.probes()[1].position);
  EXPECT_FALSE(sut.probes()[2].taken);
}

TEST_F(RecorderTest, CountsWhatItCouldNotNote) {
  const builtin::DwellPars values(builtin::DwellParsT{0.001});
  unsigned long id = 0;
  auto result = core::FctResult::NotOkay;
  for (int nth = 1; core::isFailure(result); ++nth) {
    const test::AllocationFailure failure(nth);
    result = m_runtime.addCmd({}, "A", "Dwell", values, 1, &id);
    ASSERT_TRUE(failure.happened()) << "noting needs memory, and comes after all else";
  }
  steps(2);
  sut.drain();
  EXPECT_EQ(m_axis->getCmdState(id), CmdState::DONE) << "the command does not suffer from it";
  EXPECT_EQ(m_record.lostEvents, 1U);
  EXPECT_FALSE(m_record.isFine());
}

}  // namespace
}  // namespace motion::host::observe
