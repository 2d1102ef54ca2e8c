// The states of a component: steps in a wrong one, destruction in each, and components that never come back.
#include <dlfcn.h>
#include <fmt/format.h>
#include <gmock/gmock.h>

#include <algorithm>
#include <cstdio>
#include <cstdlib>

#include "host/framework/component_lifecycle.h"
#include "tests/host/framework/lifecycle_fixture.h"
#include "tests/host/framework/no_threads.h"

namespace motion::host::framework {
namespace {

using namespace std::chrono_literals;
using test::AMPLE;
using test::ComponentLifecycleTest;
using test::expectOk;
using test::Lines;
using test::pluginDirectory;
using testing::AllOf;
using testing::AllOfArray;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using ComponentLifecycleDeathTest = ComponentLifecycleTest;

/// A step, the states that it may be taken in, and how its refusal names them.
struct Step {
  std::string name;
  std::vector<LifecycleState> allowed;
  std::string needed;
  StepResult (*take)(ComponentLifecycle&);
};

const std::vector<Step>& steps() {
  using enum LifecycleState;
  static const std::vector<Step> all = {
      {"setServices", {LOADED}, "LOADED", [](ComponentLifecycle& sut) { return sut.setServices({}, "", ""); }},
      {"init", {SERVICES_SET}, "SERVICES_SET", [](ComponentLifecycle& sut) { return sut.init(); }},
      {"start", {INITIALISED, STOPPED}, "INITIALISED or STOPPED", [](ComponentLifecycle& sut) { return sut.start(AMPLE); }},
      {"stop", {STARTED}, "STARTED", [](ComponentLifecycle& sut) { return sut.stop(); }},
      {"deinit", {INITIALISED, STOPPED}, "INITIALISED or STOPPED", [](ComponentLifecycle& sut) { return sut.deinit(); }},
      {"removeServices", {SERVICES_SET, DEINITIALISED}, "SERVICES_SET or DEINITIALISED", [](ComponentLifecycle& sut) {
         return sut.removeServices();
       }}};
  return all;
}

[[nodiscard]] std::string wrongStateText(const Step& step, ComponentLifecycle& sut) {
  try {
    return "taken: " + step.take(sut).text;
  } catch (const WrongStateError& error) {
    return error.what();
  }
}

/// One state on the way, and what the destructor does there.
struct Station {
  LifecycleState state;
  std::string name;
  Lines remaining;
};

class ComponentLifecycleStationTest : public ComponentLifecycleTest, public testing::WithParamInterface<Station> {};

TEST_P(ComponentLifecycleStationTest, takesOnlyTheStepsOfItsState) {
  const Station& station = GetParam();
  EXPECT_EQ(toString(station.state), station.name);
  for (const Step& step : steps()) {
    const Owner sut = loadUpTo("well_behaved", station.state);
    const bool isAllowed = std::find(step.allowed.begin(), step.allowed.end(), station.state) != step.allowed.end();
    if (isAllowed) {
      EXPECT_EQ(wrongStateText(step, *sut), "taken: ") << step.name;
      EXPECT_NE(sut->state(), station.state) << step.name;
    } else {
      EXPECT_EQ(wrongStateText(step, *sut), from("well_behaved", step.name + " was called in state " + station.name +
                                                                     ", but it needs state " + step.needed));
      EXPECT_EQ(sut->state(), station.state) << step.name;
      EXPECT_THAT(m_record.lines(), IsEmpty()) << step.name;
    }
  }
}

TEST_P(ComponentLifecycleStationTest, destructorTakesTheRemainingSteps) {
  Owner sut = loadUpTo("well_behaved", GetParam().state);
  sut.reset();
  EXPECT_EQ(m_record.lines(), GetParam().remaining);
}

INSTANTIATE_TEST_SUITE_P(
    States, ComponentLifecycleStationTest,
    testing::Values(
        Station{LifecycleState::LOADED, "LOADED", {"destroy"}},
        Station{LifecycleState::SERVICES_SET, "SERVICES_SET", {"clrBundleName", "clrBundlePath", "destroy"}},
        Station{LifecycleState::INITIALISED, "INITIALISED", {"deinit", "clrBundleName", "clrBundlePath", "destroy"}},
        Station{LifecycleState::STARTED, "STARTED", {"stop", "deinit", "clrBundleName", "clrBundlePath", "destroy"}},
        Station{LifecycleState::STOPPED, "STOPPED", {"deinit", "clrBundleName", "clrBundlePath", "destroy"}},
        Station{LifecycleState::DEINITIALISED, "DEINITIALISED", {"clrBundleName", "clrBundlePath", "destroy"}},
        Station{LifecycleState::SERVICES_REMOVED, "SERVICES_REMOVED", {"destroy"}}),
    [](const testing::TestParamInfo<Station>& station) { return station.param.name; });

TEST(ComponentLifecycleLimitTest, allowsAStartThirtySecondsByDefault) {
  EXPECT_EQ(ComponentLifecycle::DEFAULT_TIME_LIMIT, 30s);
}

[[nodiscard]] bool isInMemory(const std::string& plugin) {
  return ::dlopen((pluginDirectory(plugin) / LIBRARY_NAME).c_str(), RTLD_NOW | RTLD_NOLOAD) != nullptr;
}

/// Ends a child process in order, with exit code 3 only if a lost component is still there although its owner is gone. A
/// sanitizer that finds fault with such an end changes the code.
[[noreturn]] void leaveChild(std::unique_ptr<ComponentLifecycle> lifecycle, bool wasLost, const std::string& plugin) {
  lifecycle.reset();
  std::exit(wasLost && isInMemory(plugin) ? 3 : 1);
}

TEST_F(ComponentLifecycleDeathTest, losesAComponentWhoseStartNeverEnds) {
  const auto child = [this] {
    Owner sut = loadUpTo("start_never_ends", LifecycleState::INITIALISED);
    const StepResult result = sut->start(50ms);
    fmt::print(stderr, "outcome {} code {}\n{}\n", static_cast<int>(result.outcome), result.code, result.text);
    for (const Step& step : steps()) {
      fmt::print(stderr, "{}\n", wrongStateText(step, *sut));
    }
    const bool wasLost = sut->isLost();
    leaveChild(std::move(sut), wasLost, "start_never_ends");
  };
  std::vector<testing::Matcher<const std::string&>> texts = {
      HasSubstr(fmt::format("outcome {} code 0\n", static_cast<int>(StepOutcome::TIMED_OUT))),
      HasSubstr(from("start_never_ends",
                     "start did not return within 0.05 s; the component can now be neither stopped nor unloaded, so this "
                     "process must end; look in the component's traces for what it waits for, or allow it more time\n"))};
  for (const Step& step : steps()) {
    texts.emplace_back(HasSubstr(step.name + " was called in state LOST, but it needs state " + step.needed + "\n"));
  }
  EXPECT_EXIT(child(), testing::ExitedWithCode(3), AllOfArray(texts));
  EXPECT_THAT(m_record.lines(), ElementsAre("start"));
}

TEST_F(ComponentLifecycleDeathTest, losesAComponentWhoseStopExceedsTheLimitOfItsStart) {
  const auto child = [this] {
    Owner sut = loadUpTo("stop_never_ends", LifecycleState::INITIALISED);
    expectOk(sut->start(1s));
    const StepResult result = sut->stop();
    fmt::print(stderr, "outcome {}\n{}\n", static_cast<int>(result.outcome), result.text);
    const bool wasLost = sut->isLost();
    leaveChild(std::move(sut), wasLost, "stop_never_ends");
  };
  EXPECT_EXIT(child(), testing::ExitedWithCode(3),
              AllOf(HasSubstr(fmt::format("outcome {}\n", static_cast<int>(StepOutcome::TIMED_OUT))),
                    HasSubstr(from("stop_never_ends", "stop did not return within 1 s; "))));
  EXPECT_THAT(m_record.lines(), ElementsAre("start", "stop"));
}

TEST_F(ComponentLifecycleDeathTest, destructorLeavesAComponentWhoseStopNeverEnds) {
  const auto child = [this] {
    Owner sut = loadUpTo("stop_never_ends", LifecycleState::INITIALISED);
    expectOk(sut->start(1s));
    leaveChild(std::move(sut), true, "stop_never_ends");
  };
  EXPECT_EXIT(child(), testing::ExitedWithCode(3), HasSubstr(from("stop_never_ends", "stop did not return within 1 s; ")));
  EXPECT_THAT(m_record.lines(), ElementsAre("start", "stop"));
}

TEST_F(ComponentLifecycleDeathTest, destructorLeavesAComponentThatItHasNoThreadToStop) {
  const auto child = [this] {
    Owner sut = loadUpTo("well_behaved", LifecycleState::STARTED);
    {
      const test::NoThreads noThreads;
      sut.reset();
    }
    std::_Exit(isInMemory("well_behaved") ? 3 : 1);  // the component is never deleted
  };
  EXPECT_EXIT(child(), testing::ExitedWithCode(3),
              HasSubstr(from("well_behaved", "not all steps of the shut-down could be taken: ")));
  EXPECT_THAT(m_record.lines(), IsEmpty());
}

}  // namespace
}  // namespace motion::host::framework
