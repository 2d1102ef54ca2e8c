// Options survive a failed allocation: a result, no leak, nothing half done.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <deque>
#include <string>
#include <vector>

#include "tests/host/motion/allocation_sweep.h"
#include "tests/host/motion/world.h"

namespace motion::host {
namespace {

using core::FctResult;
using core::cmd::CmdOptPermType;
using test::failEachAllocation;
using test::Sweep;

/// Longer than any string keeps within itself.
constexpr const char* LONG_NAME = "a name that is too long to be kept without an allocation";

/// Requests of options that need no memory to be made again.
struct KeptOptions {
  void add(const std::string& name, CmdOptPermType permType, const std::string& label) {
    requests.push_back({names.emplace_back(name), permType, values.emplace_back(std::vector{label}), source});
  }
  /// As they were before stacking.
  void renew() {
    for (test::Labels& labels : values) {
      labels.getRef().resize(1);
    }
  }

  core::dia::CmdSourceInfo source{LONG_NAME, LONG_NAME, 1};
  std::deque<std::string> names;
  std::deque<test::Labels> values;
  std::vector<OptionRequest> requests;
};

struct OptionsWithoutMemoryTest : testing::Test {
  OptionsWithoutMemoryTest() {
    world.script.journaling = false;
    world.registerOptions();
    problem.reserve(1000);
  }

  std::string problem;
  test::World world;
  MotionObject& axis = world.addAxis(LONG_NAME);
  KeptOptions given;
};

TEST_F(OptionsWithoutMemoryTest, areInForceWithTheirCommandOrNotAtAll) {
  world.options.jobCount = 2;
  world.options.prepared = world.options.cyclic;
  ASSERT_EQ(world.giveOption(axis, {"Plain", CmdOptPermType::PERM_ON, LONG_NAME}), FctResult::Okay);
  given.add("Stack", CmdOptPermType::ONCE, "A");
  given.add("Stack", CmdOptPermType::PERM_ON, LONG_NAME);
  given.add("Plain", CmdOptPermType::ONCE, "C");
  OptionSet::State before = axis.options().state();
  const std::string name = "Test";
  const test::Label values("A");
  unsigned long id = 0;
  const auto call = [&] {
    const FctResult result =
        world.runtime.preparation().add(axis, {name, values, given.source, given.requests}, id, problem);
    given.renew();
    if (core::isFailure(result)) {
      EXPECT_EQ(axis.options().state().size(), 1U);
      EXPECT_EQ(world.options.optionsAlive, 1);
      EXPECT_EQ(world.options.jobsAlive, 0);
      EXPECT_EQ(axis.bufferedCount(), 0U);
    }
    return result;
  };
  const Sweep added{call, FctResult::Okay, std::vector{FctResult::OutOfMemory, FctResult::PreparationError}, [&] {
                      world.runtime.preparation().clear();
                      axis.options().restore(OptionSet::State(before));
                    }};
  EXPECT_GT(failEachAllocation(added), 40);
}

TEST_F(OptionsWithoutMemoryTest, areInForceAloneOrNotAtAll) {
  given.add("Stack", CmdOptPermType::PERM_ON, LONG_NAME);
  const auto call = [&] {
    const FctResult result = world.runtime.preparation().addOption(axis, given.requests[0], problem);
    EXPECT_EQ(axis.options().state().empty(), core::isFailure(result));
    EXPECT_EQ(world.options.optionsAlive, core::isFailure(result) ? 0 : 1);
    return result;
  };
  const Sweep alone{call, FctResult::Okay, std::vector{FctResult::OutOfMemory, FctResult::PreparationError},
                    [&] { axis.options().restore({}); }};
  EXPECT_GT(failEachAllocation(alone), 5);
  const std::string unknown(LONG_NAME);
  const auto issueUnknown = [&] {
    return world.runtime.addCmdOption(given.source, LONG_NAME, unknown, CmdOptPermType::ONCE, given.values[0]);
  };
  const Sweep refused{issueUnknown, FctResult::OptionNotSupported, std::vector{FctResult::OutOfMemory}, [] {}};
  EXPECT_GT(failEachAllocation(refused), 0);
}

}  // namespace
}  // namespace motion::host
