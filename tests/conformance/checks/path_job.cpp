// The job of the option SwitchOnPath, cycle by cycle.
#include <map>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/path_world.h"
#include "conformance/trace_texts.h"

namespace motion::conformance {
namespace {

using core::job::JobResult;

constexpr JobResult NOTHING{0};
constexpr JobResult FAILED{0xF0000004};
constexpr auto SET = kavo::SwitchOnPathAction::SET_SIGNAL;
constexpr auto RESET = kavo::SwitchOnPathAction::RESET_SIGNAL;
constexpr auto NO_ACTION = static_cast<kavo::SwitchOnPathAction>(2);
const std::string ACTION_FAILED = "Error job_obj_switch_on_path execute: signal action failed";

void sets(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto armed = sphere(7, {10, 0, 0}, 2);
  world.arm({armed});
  for (const double x : {0.0, 1.0, 5.0, 7.0}) {
    expectFalse("fires outside of the sphere", world.firesAt({x, 0, 0}, 7));
    expectFalse("reached", armed->isReached());
  }
  expectTrue("fires on the surface", world.firesAt({8, 0, 0}, 7));
  expectTrue("reached", armed->isReached());
  expectEqual("counter", world.subject.in(7), 1);
  expectEqual("traces", world.subject.traces(), Texts{});
}

void resets(const Bundle& bundle) {
  PathWorld world(bundle);
  world.subject.out(7) = 9;
  world.arm({sphere(7, {0, 0, 0}, 1, 0, RESET)});
  expectTrue("fires", world.firesAt({0, 0, 0}, 7));
  expectEqual("counter", world.subject.in(7), 9);
}

void once(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(7, {0, 0, 0}, 1)});
  for (const double x : {2.0, 1.0, 0.0, 0.5, 3.0, 0.5, 0.0, 3.0, -0.5, -1.0}) {
    expectEqual("result", world.cycleAt({x, 0, 0}), NOTHING);
  }
  expectEqual("counter", world.subject.in(7), 1);
  expectEqual("switches", world.subject.host.calls.count("memory.beginAccess signals_in"), 1);
}

void reachedBefore(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto fired = sphere(7, {0, 0, 0}, 1);
  fired->setReached();
  world.arm({fired, sphere(8, {0, 0, 0}, 1)});
  expectEqual("result", world.cycleAt({0, 0, 0}), NOTHING);
  expectEqual("counter of the one that had fired", world.subject.in(7), 0);
  expectEqual("counter of the other one", world.subject.in(8), 1);
}

void noConditions(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({});
  expectEqual("result", world.cycleAt({0, 0, 0}), NOTHING);
  expectEqual("calls of the host", world.subject.host.calls.all(), Texts{});
}

void allInOneCycle(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(1, {1, 0, 0}, 0.1), sphere(2, {3, 0, 0}, 0.1), sphere(3, {1, 0, 0}, 0.1), sphere(4, {2, 0, 0}, 0.1)});
  std::vector<std::vector<int>> found;
  for (const double x : {1.0, 2.0, 3.0}) {
    expectEqual("result", world.cycleAt({x, 0, 0}), NOTHING);
    found.push_back({world.subject.in(1), world.subject.in(2), world.subject.in(3), world.subject.in(4)});
  }
  expectEqual("counters cycle by cycle", found, std::vector<std::vector<int>>{{1, 0, 1, 0}, {1, 0, 1, 1}, {1, 1, 1, 1}});
}

void orderOfTheList(const Bundle& bundle, kavo::SwitchOnPathAction first, kavo::SwitchOnPathAction second, bool isSet) {
  PathWorld world(bundle);
  world.arm({sphere(7, {0, 0, 0}, 1, 0, first), sphere(7, {0, 0, 0}, 1, 0, second)});
  expectEqual("result", world.cycleAt({0, 0, 0}), NOTHING);
  expectEqual("the signal is set", world.subject.isSet(7), isSet);
  expectEqual("accesses to the counters", world.subject.host.calls.count("memory.beginAccess signals_in"), 2);
}

void unknownAction(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto unknown = sphere(7, {0, 0, 0}, 1, 0, NO_ACTION);
  const auto behind = sphere(8, {0, 0, 0}, 1);
  world.arm({sphere(9, {0, 0, 0}, 1), unknown, behind});
  expectEqual("result", world.cycleAt({0, 0, 0}), FAILED);
  expectEqual("traces", world.subject.traces(), Texts{ACTION_FAILED});
  expectEqual("counter of the one before it", world.subject.in(9), 1);
  expectTrue("it counts as fired", unknown->isReached());
  expectFalse("the one behind it has fired", behind->isReached());
  world.subject.forget();
  expectEqual("result in the next cycle", world.cycleAt({0, 0, 0}), NOTHING);
  expectEqual("traces in the next cycle", world.subject.traces(), Texts{});
  expectEqual("counters", std::vector<int>({world.subject.in(9), world.subject.in(7), world.subject.in(8)}),
              std::vector<int>{1, 0, 1});
}

void failingSignal(const Bundle& bundle, kavo::SwitchOnPathAction action) {
  PathWorld world(bundle);
  world.subject.out(7) = action == RESET ? 1 : 0;
  const auto failing = sphere(7, {0, 0, 0}, 1, 0, action);
  const auto behind = sphere(8, {0, 0, 0}, 1);
  world.arm({failing, behind});
  world.subject.host.calls.fail("memory.beginAccess signals_in", 0x80060001, 1);
  expectEqual("result", world.cycleAt({0, 0, 0}), FAILED);
  expectEqual("traces of the job", world.subject.tracesOf("job_obj_switch_on_path"), Texts{ACTION_FAILED});
  expectTrue("it counts as fired", failing->isReached());
  expectFalse("the one behind it has fired", behind->isReached());
  world.subject.host.calls.failNothing();
  expectEqual("result in the next cycle", world.cycleAt({0, 0, 0}), NOTHING);
  expectEqual("counter of the one that failed", world.subject.in(7), 0);
  expectEqual("counter of the one behind it", world.subject.in(8), 1);
}

void signalsGone(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(7, {0, 0, 0}, 1), sphere(8, {0, 0, 0}, 1, 0, RESET)});
  expectEqual("status of stop", world.subject.component().stop(), 0);
  world.subject.forget();
  for (const auto result : {FAILED, FAILED, NOTHING}) {
    expectEqual("result", world.cycleAt({0, 0, 0}), result);
  }
  expectEqual("traces of the job", world.subject.tracesOf("job_obj_switch_on_path"), Texts{ACTION_FAILED, ACTION_FAILED});
}

void reachedFirst(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto armed = sphere(7, {0, 0, 0}, 1);
  world.arm({armed});
  bool wasReached = false;
  const auto watch =
      world.subject.host.calls.onCall("memory.beginAccess signals_in", [&] { wasReached = armed->isReached(); });
  expectTrue("fires", world.firesAt({0, 0, 0}, 7));
  expectTrue("reached when the signal is switched", wasReached);
}

void notAheadAtFirst(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(7, {2, 0, 0}, 0.5, 0.001), sphere(8, {3, 0, 0}, 0.5, 0.001), sphere(9, {1, 0, 0}, 0, 0.001)});
  expectEqual("result", world.cycleAt({1, 0, 0}), NOTHING);
  expectEqual("counter of where it seems to run from the origin", world.subject.in(7), 0);
  expectEqual("counter of where it is", world.subject.in(9), 1);
  expectEqual("result of the second cycle", world.cycleAt({2, 0, 0}), NOTHING);
  expectEqual("counter of the next point of the line", world.subject.in(8), 1);
}

void ahead(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(1, {10, 0, 0}, 0.5), sphere(2, {10, 0, 0}, 0.5, 0.002), sphere(3, {10, 0, 0}, 0.5, 0.004)});
  std::map<std::uint32_t, int> firstCycle;
  for (int x = 0; x <= 12; ++x) {
    expectEqual("result", world.cycleAt({static_cast<double>(x), 0, 0}), NOTHING);
    for (const std::uint32_t signal : {1U, 2U, 3U}) {
      if (world.subject.in(signal) != 0) {
        firstCycle.try_emplace(signal, x);
      }
    }
  }
  expectEqual("cycles in which they fire", std::vector<int>({firstCycle[1], firstCycle[2], firstCycle[3]}),
              std::vector<int>{10, 8, 6});
}

void standing(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(7, {1, 0, 0}, 0, 0.5)});
  expectFalse("fires beside the target", world.firesAt({0, 0, 0}, 7) || world.firesAt({0, 0, 0}, 7));
  world.arm({sphere(8, {1, 0, 0}, 0, 0.5), sphere(9, {1, 0, 0}, 0)});
  expectTrue("fires on the target", world.firesAt({1, 0, 0}, 8));
  expectEqual("counter without look-ahead", world.subject.in(9), 1);
}

void cycleTime(const Bundle& bundle) {
  PathWorld world(bundle);
  world.kin.m_cycleTime = 0.004;
  world.arm({sphere(7, {4, 0, 0}, 0.25, 0.008)});
  expectFalse("fires in the first cycle", world.firesAt({1, 0, 0}, 7));
  expectTrue("fires two cycles ahead", world.firesAt({2, 0, 0}, 7));
}

void displacementOfOneCycle(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(7, {7, 0, 0}, 0, 0.001)});
  for (const double x : {0.0, 1.0, 3.0, 4.0, 5.0}) {
    expectFalse("fires on the way", world.firesAt({x, 0, 0}, 7));
  }
  expectTrue("fires one cycle before the target", world.firesAt({6, 0, 0}, 7));
}

void lastPointOfFailure(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(6, {2, 0, 0}, 0, 0, NO_ACTION), sphere(7, {5, 0, 0}, 0, 0.001)});
  expectEqual("result", world.cycleAt({1, 0, 0}), NOTHING);
  expectEqual("result of the failing cycle", world.cycleAt({2, 0, 0}), FAILED);
  expectTrue("looks ahead from the point before the failure", world.firesAt({3, 0, 0}, 7));
}

void firstCycleOfFailure(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(6, {1, 0, 0}, 0, 0, NO_ACTION), sphere(7, {2, 0, 0}, 0, 0.001)});
  expectEqual("result of the failing first cycle", world.cycleAt({1, 0, 0}), FAILED);
  expectTrue("looks at where it is, as in a first cycle", world.firesAt({2, 0, 0}, 7));
}

void newJobStartsAnew(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(1, {50, 0, 0}, 0)});
  expectEqual("result", world.cycleAt({1, 0, 0}), NOTHING);
  world.arm({sphere(7, {3, 0, 0}, 0, 0.001)});
  expectFalse("looks ahead in the first cycle of a new job", world.firesAt({2, 0, 0}, 7));
  expectFalse("fires behind the target", world.firesAt({2, 0, 0}, 7));
}

void sharedCondition(const Bundle& bundle) {
  PathWorld world(bundle);
  const auto carried = sphere(7, {5, 0, 0}, 0);
  world.arm({carried});
  expectFalse("fires too early", world.firesAt({1, 0, 0}, 7));
  world.arm({sphere(8, {9, 0, 0}, 0), carried});
  expectTrue("fires in the next job", world.firesAt({5, 0, 0}, 7));
  world.arm({carried});
  expectFalse("fires again in a third job", world.firesAt({5, 0, 0}, 7));
}

void orientation(const Bundle& bundle) {
  PathWorld world(bundle);
  world.arm({sphere(7, {1, 2, 3}, 0)});
  expectTrue("fires whatever the orientation is", world.firesAt({1, 2, 3}, 7));
}

Checks failureChecks() {
  return {
      {"path.unknown-action", "an unknown action fails once and stops the cycle", unknownAction},
      {"path.failing-set", "a signal that cannot be set fails once and stops the cycle",
       [](const Bundle& bundle) { failingSignal(bundle, SET); }},
      {"path.failing-reset", "a signal that cannot be reset fails once and stops the cycle",
       [](const Bundle& bundle) { failingSignal(bundle, RESET); }},
      {"path.signals-gone", "without signals each condition fails once", signalsGone},
      {"path.reached-first", "a condition is marked before its signal is switched", reachedFirst},
      {"path.last-point-of-failure", "a cycle that failed does not count for the displacement", lastPointOfFailure},
      {"path.first-cycle-of-failure", "a first cycle that failed is followed by a first cycle", firstCycleOfFailure},
  };
}

Checks aheadChecks() {
  return {
      {"path.not-ahead-at-first", "the first cycle looks at where the tool is", notAheadAtFirst},
      {"path.ahead", "look-ahead fires as many cycles earlier as it says", ahead},
      {"path.standing", "a tool that stands is looked at where it is", standing},
      {"path.cycle-time", "the object says how long a cycle is", cycleTime},
      {"path.displacement-of-one-cycle", "only the displacement since the cycle before counts", displacementOfOneCycle},
      {"path.new-job", "a new job has a first cycle of its own", newJobStartsAnew},
  };
}

}  // namespace

Checks pathChecks() {
  const Checks firing = {
      {"path.sets", "the signal is set when the tool enters the sphere", sets},
      {"path.resets", "the signal is reset when the tool enters the sphere", resets},
      {"path.once", "a condition fires once, however the path goes on", once},
      {"path.reached-before", "a condition that has fired is left alone", reachedBefore},
      {"path.no-conditions", "without conditions nothing is touched", noConditions},
      {"path.all-in-one-cycle", "each cycle looks at every condition", allInOneCycle},
      {"path.set-then-reset", "opposite actions on one signal are done in the order of the list",
       [](const Bundle& bundle) { orderOfTheList(bundle, SET, RESET, false); }},
      {"path.reset-then-set", "opposite actions on one signal are done in the order of the list",
       [](const Bundle& bundle) { orderOfTheList(bundle, RESET, SET, true); }},
      {"path.shared-condition", "a condition that is carried on keeps whether it has fired", sharedCondition},
      {"path.orientation", "the orientation of the tool does not matter", orientation},
  };
  return together(
      {firing, failureChecks(), aheadChecks(), pathArithmeticChecks(), pathRefusalChecks(), pathStackingChecks()});
}

}  // namespace motion::conformance
