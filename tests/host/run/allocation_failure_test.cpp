// The real bundle in this host: wherever memory runs out between the two, nothing is thrown, lost or left half done.
#include <fmt/format.h>
#include <gtest/gtest.h>

#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "host/datalayer/data_layer.h"
#include "host/framework/bundle_loader.h"
#include "host/framework/component_lifecycle.h"
#include "host/motion/runtime.h"
#include "host/trace/trace_service.h"
#include "support/fake_allocation.h"

namespace motion::host::run {
namespace {

using core::FctResult;
using motion::test::AllocationFailure;

/// Host and component, driven on the thread of the test, so that its allocations can be made to fail.
class AllocationFailureTest : public testing::Test {
 protected:
  void SetUp() override {
    framework::LoadResult loaded = framework::loadBundle(KAVO_BUNDLE);
    ASSERT_TRUE(loaded.bundle) << loaded.error;
    m_bundle = std::make_unique<framework::LoadedBundle>(std::move(*loaded.bundle));
    Records& records = m_runtime.records();
    auto& component = m_bundle->component();
    component.addBundleTrace(&m_trace);
    component.setMotionExtIF(&records.extension);
    component.setDataLayerFactory(&m_dataLayer);
    component.setMotionCmdIF(&records.cmd);
    component.setMotionSysIF(&records.sys);
    component.setMotionCmdIF(&records.cmd2);
    component.setMotionSysIF(&records.sys2);
    component.setMotionDataIF(&records.data);
    component.setBundlePath(KAVO_BUNDLE);
    component.setBundleName("Motion.Kavo");
    ASSERT_EQ(component.init(), 0);
  }
  void TearDown() override {
    if (m_bundle != nullptr) {
      m_runtime.stopCommands();
      m_bundle->component().stop();
      m_bundle->component().deinit();
      m_bundle->component().removeBundleTrace(&m_trace);
      m_bundle.reset();
    }
  }

  /// What a component may leave behind in the host.
  [[nodiscard]] std::vector<std::size_t> footprint() {
    m_dataLayer.reclaim();
    return {m_runtime.objFactory().size(),
            m_runtime.cmdFactory().all().size(),
            m_runtime.cmdOptionFactory().all().size(),
            m_dataLayer.memoryCount(),
            m_dataLayer.openHandleCount(),
            m_dataLayer.providerCount(),
            m_runtime.preparation().alive(),
            m_trace.unitCount()};
  }

  trace::TraceService m_trace{nullptr};
  datalayer::DataLayer m_dataLayer;
  Runtime m_runtime{RuntimeConfig{}};
  std::unique_ptr<framework::LoadedBundle> m_bundle;
};

TEST_F(AllocationFailureTest, AStartEndsWholeOrLeavesNothing) {
  auto& sut = m_bundle->component();
  ASSERT_EQ(sut.start(), 0);
  ASSERT_EQ(sut.stop(), 0);
  const std::vector<std::size_t> before = footprint();
  int nth = 0;
  for (bool hasFailed = true; hasFailed;) {
    SCOPED_TRACE(fmt::format("allocation {}", ++nth));
    std::int32_t started = 0;
    {
      const AllocationFailure failure(nth);
      started = sut.start();
      hasFailed = failure.happened();
    }
    if (started == 0) {
      // A component that could not open its signals runs without them and says so at each call.
      const FctResult result = m_runtime.records().sysSync.setSignal(nullptr, 7);
      ASSERT_TRUE(result == FctResult::Okay || (hasFailed && result == FctResult::NotOkay)) << core::toCode(result);
      ASSERT_EQ(sut.stop(), 0);
    } else {
      ASSERT_TRUE(hasFailed) << started;
    }
    ASSERT_EQ(footprint(), before);
  }
  EXPECT_GT(nth, 100);
  EXPECT_EQ(sut.start(), 0);
}

TEST_F(AllocationFailureTest, AStopNeedsNoMemory) {
  auto& sut = m_bundle->component();
  const std::vector<std::size_t> before = footprint();
  for (int nth = 1, hasFailed = 1; hasFailed != 0; ++nth) {
    SCOPED_TRACE(fmt::format("allocation {}", nth));
    ASSERT_EQ(sut.start(), 0);
    {
      const AllocationFailure failure(nth);
      sut.stop();
      hasFailed = failure.happened() ? 1 : 0;
    }
    ASSERT_EQ(footprint(), before);
  }
}

TEST_F(AllocationFailureTest, ACommandIsBufferedOrRefused) {
  ASSERT_EQ(m_bundle->component().start(), 0);
  for (const auto& [name, type] : {std::pair{"A", core::ObjectType::AXIS}, std::pair{"K", core::ObjectType::KINEMATICS}}) {
    m_runtime.addObject(name, type, {});
  }
  const core::MotionCmdGeneralFctT& cmds = m_runtime.records().cmdGeneral;
  const core::dia::CmdSourceInfo source;
  const std::vector<std::string> group{"K"};
  unsigned long id = 0;
  const std::vector<std::function<FctResult()>> calls{
      [&] { return cmds.setSignalCmd(&m_runtime, source, "A", 3, id); },
      [&] { return cmds.resetSignalCmd(&m_runtime, source, "K", 3, id); },
      [&] { return cmds.waitForSignalCmd(&m_runtime, source, "A", 3, true, id); },
      [&] { return cmds.waitForSignalResetCmd(&m_runtime, source, "K", 3, id); },
      [&] { return cmds.joinCmd(&m_runtime, source, "A", group, true, id); }};
  for (std::size_t i = 0; i < calls.size(); ++i) {
    int nth = 0;
    for (bool hasFailed = true; hasFailed;) {
      SCOPED_TRACE(fmt::format("call {}, allocation {}", i, ++nth));
      FctResult result{};
      {
        const AllocationFailure failure(nth);
        result = calls[i]();
        hasFailed = failure.happened();
      }
      ASSERT_EQ(m_runtime.preparation().alive(), core::isFailure(result) ? 0U : 1U);
      ASSERT_TRUE(hasFailed || result == FctResult::Okay) << core::toCode(result);
      m_runtime.stopCommands();
    }
    EXPECT_GT(nth, 5);
  }
}

TEST_F(AllocationFailureTest, AnOptionIsInForceOrRefused) {
  ASSERT_EQ(m_bundle->component().start(), 0);
  MotionObject& axis = *m_runtime.addObject("A", core::ObjectType::AXIS, {});
  MotionObject& robot = *m_runtime.addObject("K", core::ObjectType::KINEMATICS, {});
  const Records& records = m_runtime.records();
  const core::dia::CmdSourceInfo source;
  const double target[3] = {1, 2, 3};
  const auto switchOnPath = [&] {
    return records.cmdKin.kinSwitchOnPathCmdOpt(&m_runtime, source, core::cmd::CmdOptPermType::PERM_ON, "K",
                                                kavo::SwitchOnPathMode::ENTER_SPHERE, 3,
                                                kavo::SwitchOnPathAction::SET_SIGNAL, target, 1.0, 0.0);
  };
  /// What is in force under an option's name in that place.
  const auto latestOf = [](MotionObject& object) {
    const OptionSet::State& state = object.options().state();
    return state.empty() ? nullptr : state[0].latest;
  };
  const std::vector<std::pair<MotionObject*, std::function<FctResult()>>> calls{
      {&axis, [&] { return records.cmdGeneral.setSignalCmdOpt(&m_runtime, source, "A", 3); }}, {&robot, switchOnPath}};
  for (const auto& [object, call] : calls) {
    ASSERT_EQ(call(), FctResult::Okay);  // the others are stacked upon it
    int nth = 0;
    for (bool hasFailed = true; hasFailed;) {
      SCOPED_TRACE(fmt::format("{}, allocation {}", object->name(), ++nth));
      const OptionSet::Shared before = latestOf(*object);
      FctResult result{};
      {
        const AllocationFailure failure(nth);
        result = call();
        hasFailed = failure.happened();
      }
      ASSERT_TRUE(hasFailed || result == FctResult::Okay) << core::toCode(result);
      ASSERT_EQ(latestOf(*object) == before, core::isFailure(result));
    }
    EXPECT_GT(nth, 5);
  }
}

}  // namespace
}  // namespace motion::host::run
