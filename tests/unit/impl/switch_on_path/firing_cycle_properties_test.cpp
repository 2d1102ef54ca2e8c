// Random paths and conditions: each condition fires once at most, and in the very cycle in which a plain calculation says
// so.
#include <rapidcheck.h>

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>
#include <optional>

#include "impl/switch_on_path/cmd_option_switch_on_path.h"
#include "motion/core/cmd/i_cmd_opt_handler.h"
#include "switch_on_path/switch_on_path_fixture.h"

namespace motion::kavo::job {
namespace {

using core::cmd::CmdOptPermType;
using core::cmd::CmdResult;
using core::job::JobResult;
using Point = std::array<double, 3>;
using Path = std::vector<Point>;

/// One of the whole range in every run, not only in late ones.
template <typename NUMBER>
NUMBER anyIn(NUMBER from, NUMBER to) {
  return *rc::gen::resize(rc::kNominalSize, rc::gen::inRange(from, to));
}

/// A number of thousandths.
double thousandths(int from, int to) {
  return anyIn(from, to) / 1000.0;
}

Point anyPoint(int range) {
  return {thousandths(-range, range + 1), thousandths(-range, range + 1), thousandths(-range, range + 1)};
}

Path straight(std::size_t cycles) {
  const Point start = anyPoint(1000);
  const Point step = anyPoint(40);
  Path path;
  for (std::size_t i = 0; i < cycles; ++i) {
    const auto n = static_cast<double>(i);
    path.push_back({start[0] + n * step[0], start[1] + n * step[1], start[2] + n * step[2]});
  }
  return path;
}

Path circle(std::size_t cycles) {
  const Point centre = anyPoint(1000);
  const double radius = thousandths(50, 800);
  const double step = 2 * std::numbers::pi / anyIn(12, 200);
  const double tilt = thousandths(0, 3142);
  Path path;
  for (std::size_t i = 0; i < cycles; ++i) {
    const double angle = step * static_cast<double>(i);
    const double y = radius * std::sin(angle);
    path.push_back({centre[0] + radius * std::cos(angle), centre[1] + y * std::cos(tilt), centre[2] + y * std::sin(tilt)});
  }
  return path;
}

Path anyPath() {
  const auto cycles = anyIn<std::size_t>(2, 120);
  return *rc::gen::arbitrary<bool>() ? straight(cycles) : circle(cycles);
}

double anyCycleTime() {
  return *rc::gen::element(0.001, 0.002, 0.004, 0.0015, 0.0008);
}

/// A condition that the path has a good chance to meet, from one of its points on.
Condition nearPath(std::uint32_t signalId, const Path& path, std::size_t from = 0) {
  Point target = path[anyIn<std::size_t>(from, path.size())];
  const Point offset = anyPoint(60);
  for (std::size_t axis = 0; axis < 3; ++axis) {
    target[axis] += offset[axis];
  }
  const double radius = anyIn(0, 8) == 0 ? 0.0 : thousandths(0, 120);
  const double preTriggerTime = anyIn(0, 4) == 0 ? 0.0 : thousandths(0, 12);
  return sphere(signalId, target, radius, preTriggerTime);
}

/// Does a condition fire at a point of a path? `last` is absent in the first cycle of a command.
bool isWithin(const SwitchOnPathPars& pars, const std::optional<Point>& last, const Point& pos, double cycleTime) {
  double px = pos[0];
  double py = pos[1];
  double pz = pos[2];
  if (last && pars.preTriggerTime != 0) {
    const double k = pars.preTriggerTime / cycleTime;
    px = std::fma(k, pos[0] - (*last)[0], pos[0]);
    py = std::fma(k, pos[1] - (*last)[1], pos[1]);
    pz = std::fma(k, pos[2] - (*last)[2], pos[2]);
  }
  const double x2 = (pars.targetPos[0] - px) * (pars.targetPos[0] - px);
  const double y2 = (pars.targetPos[1] - py) * (pars.targetPos[1] - py);
  const double z2 = (pars.targetPos[2] - pz) * (pars.targetPos[2] - pz);
  const double inPlane = x2 + y2;
  return std::sqrt(inPlane + z2) <= pars.radius;
}

class FiringCyclePropertiesTest : public SwitchOnPathJobTest {
 protected:
  void resetSignals() {
    std::ranges::fill(bytes(SIGNALS_IN_ADDRESS), std::uint8_t{0});
    std::ranges::fill(bytes(SIGNALS_OUT_ADDRESS), std::uint8_t{0});
    m_host.calls.clear();
  }
};

TEST_F(FiringCyclePropertiesTest, FiresInTheCycleThatAPlainCalculationGives) {
  int fired = 0;
  int missed = 0;
  int lookedAhead = 0;
  EXPECT_TRUE(rc::check("each condition fires in its cycle", [&] {
    resetSignals();
    const Path path = anyPath();
    m_obj.m_cycleTime = anyCycleTime();
    SwitchOnPathParsListT conditions;
    const auto count = anyIn<std::uint32_t>(1, 7);
    for (std::uint32_t signal = 0; signal < count; ++signal) {
      conditions.push_back(nearPath(signal, path));
    }
    arm(conditions);
    std::vector<bool> expected(count, false);
    std::optional<Point> last;
    for (const Point& pos : path) {
      RC_ASSERT(cycleAt(pos) == JobResult::NoEffect);
      for (std::uint32_t signal = 0; signal < count; ++signal) {
        const bool isNow = !expected[signal] && isWithin(*conditions[signal], last, pos, m_obj.m_cycleTime);
        lookedAhead += isNow && last && conditions[signal]->preTriggerTime != 0 ? 1 : 0;
        expected[signal] = expected[signal] || isNow;
        RC_ASSERT(in(signal) == (expected[signal] ? 1 : 0));
        RC_ASSERT(conditions[signal]->isReached() == expected[signal]);
      }
      last = pos;
    }
    const auto hits = static_cast<int>(std::ranges::count(expected, true));
    fired += hits;
    missed += static_cast<int>(count) - hits;
  }));
  EXPECT_GT(fired, 50) << "else the paths were worth nothing";
  EXPECT_GT(missed, 20);
  EXPECT_GT(lookedAhead, 10);
}

/// The options that are active on the object.
class ActiveOptions : public core::cmd::ICmdOptHandler {
 public:
  CmdResult getDataOfOption(const core::cmd::CmdId&, const core::IContainer*& data) const override {
    data = m_data;
    return m_data != nullptr ? CmdResult::Okay : CmdResult::NoOptionData;
  }
  const core::IContainer* m_data = nullptr;
};

/// A command of a program: the option that comes with it, and the path that it runs.
struct Command {
  CmdOptPermType permType;
  Condition given;
  Path path;
};

class StackedConditionsTest : public FiringCyclePropertiesTest {
 protected:
  StackedConditionsTest() {
    EXPECT_EQ(cmd::CmdOptionSwitchOnPath::registerCmdOption(m_host.ext, ""), CmdResult::Okay);
    m_obj.m_unitSettings.entries[0].factor = 0.25;  // exact, so that the plain calculation can use the same numbers
    m_obj.m_unitSettings.entries[6].factor = 0.5;
  }

  [[nodiscard]] static std::vector<Command> anyProgram() {
    const auto count = anyIn<std::uint32_t>(1, 6);
    const Path all = anyPath();
    std::vector<Command> program;
    for (std::uint32_t signal = 0; signal < count; ++signal) {
      const auto permType = anyIn(0, 6) == 0              ? CmdOptPermType::PERM_OFF
                            : *rc::gen::arbitrary<bool>() ? CmdOptPermType::ONCE
                                                          : CmdOptPermType::PERM_ON;
      program.push_back({permType, nearPath(signal, all, signal * all.size() / count), {}});
    }
    for (std::size_t i = 0; i < all.size(); ++i) {
      program[i * count / all.size()].path.push_back(all[i]);
    }
    return program;
  }
  /// In the units of the user.
  [[nodiscard]] static Condition asUserWrites(const SwitchOnPathPars& pars) {
    auto user = condition(pars);
    for (double& coordinate : user->targetPos) {
      coordinate *= 4;
    }
    user->radius *= 4;
    user->preTriggerTime *= 2;
    return user;
  }
};

TEST_F(StackedConditionsTest, FireOnceOverAllCommandsAndInTheirCycle) {
  int carriedAndFired = 0;
  int fired = 0;
  EXPECT_TRUE(rc::check("stacked conditions fire once", [&] {
    resetSignals();
    m_obj.m_cycleTime = anyCycleTime();
    const auto program = anyProgram();
    std::vector<int> firings(program.size(), 0);
    std::vector<std::size_t> active;  // what the list of a command holds, by the command that brought it
    std::vector<std::unique_ptr<cmd::CmdOptionSwitchOnPath>> options;
    ActiveOptions handler;
    for (std::size_t now = 0; now < program.size(); ++now) {
      auto values = listOf({asUserWrites(*program[now].given)});
      auto permType = program[now].permType;
      options.push_back(std::make_unique<cmd::CmdOptionSwitchOnPath>());
      auto& option = *options.back();
      RC_ASSERT(option.prepareStackableCmdOption(m_obj, handler, &values, permType, m_source) == CmdResult::Okay);
      RC_ASSERT(option.setParameter(&values, m_host.objFactory, m_obj, m_dia) == CmdResult::Okay);
      RC_ASSERT(option.getParameter(handler.m_data) == CmdResult::Okay);
      const auto jobs = option.createJobs(m_host.objFactory);
      RC_ASSERT(jobs.size() == 1U);
      const std::unique_ptr<core::job::IJobObject> object(jobs.front());
      RC_ASSERT(object->registerInputs(&m_handler) == JobResult::NoEffect);
      m_jobList.m_jobs.clear();
      RC_ASSERT(object->addJobsToJoblist(&m_jobList, core::job::JobListTypes::CYCLIC_EXECUTION) == JobResult::NoEffect);

      std::erase_if(active, [&](std::size_t by) { return firings[by] != 0 || permType == CmdOptPermType::PERM_OFF; });
      active.insert(active.begin(), now);
      std::optional<Point> last;
      for (const Point& pos : program[now].path) {
        m_pose.set({pos[0], pos[1], pos[2], 0, 0, 0});
        RC_ASSERT(m_jobList.m_jobs.front().job() == JobResult::NoEffect);
        for (const std::size_t by : active) {
          if (firings[by] == 0 && isWithin(*program[by].given, last, pos, m_obj.m_cycleTime)) {
            ++firings[by];
            ++fired;
            carriedAndFired += by != now ? 1 : 0;
          }
        }
        for (std::uint32_t signal = 0; signal < program.size(); ++signal) {
          RC_ASSERT(in(signal) == firings[signal]);
        }
        last = pos;
      }
    }
  }));
  EXPECT_GT(fired, 50);
  EXPECT_GT(carriedAndFired, 5) << "else nothing was carried over";
}

TEST_F(StackedConditionsTest, ComeBackFromInternalUnitsAsTheyWere) {
  // Each of the two conversions rounds once, by half a unit in the last place at most: together one relative epsilon.
  const auto isClose = [](double value, double original) {
    return std::abs(value - original) <= std::numeric_limits<double>::epsilon() * std::abs(original);
  };
  EXPECT_TRUE(rc::check("conversion there and back", [&] {
    m_obj.m_unitSettings.entries[0].factor = *rc::gen::element(0.001, 1.0, 0.0254, 0.3048, 1e-6);
    m_obj.m_unitSettings.entries[6].factor = *rc::gen::element(0.001, 1.0, 60.0, 1e-6);
    const auto anyValue = [] { return anyIn(-1'000'000, 1'000'001) / 997.0; };
    const auto given = sphere(0, {anyValue(), anyValue(), anyValue()}, anyValue(), anyValue());
    const SwitchOnPathPars original = *given;
    auto values = listOf({given});
    auto permType = CmdOptPermType::ONCE;
    const ActiveOptions none;
    RC_ASSERT(cmd::CmdOptionSwitchOnPath().prepareStackableCmdOption(m_obj, none, &values, permType, m_source) ==
              CmdResult::Okay);
    const auto back = [this](core::UnitEntry entry, double value) {
      return m_host.objFactory.m_unitHelper.toUser(m_obj.m_unitSettings, entry, value);
    };
    for (std::size_t axis = 0; axis < 3; ++axis) {
      RC_ASSERT(isClose(back(core::UnitEntry::LENGTH, given->targetPos[axis]), original.targetPos[axis]));
    }
    RC_ASSERT(isClose(back(core::UnitEntry::LENGTH, given->radius), original.radius));
    RC_ASSERT(isClose(back(core::UnitEntry::TIME, given->preTriggerTime), original.preTriggerTime));
    m_host.calls.clear();
  }));
}

}  // namespace
}  // namespace motion::kavo::job
