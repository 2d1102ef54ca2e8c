// Members of a join wait for one another and end in the same cycle.
#include <algorithm>
#include <array>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/join_world.h"

namespace motion::conformance {
namespace {

using core::cmd::CmdState;
using Results = JoinWorld::Results;
constexpr auto WAIT = JoinWorld::WAIT;
constexpr auto DONE = JoinWorld::DONE;

void preparedTraces(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"C", "B"}, true);
  const auto b = world.prepared(world.b, 21, {"A", "C"});
  const std::string text = "group=[A,B,C], syncStartnextCmd=";
  expectEqual("traces", world.subject.traces(),
              Texts{joinInfo("registerForJoin", "A", 1, text + "true, command PREPARED"),
                    joinInfo("registerForJoin", "B", 1, text + "false, command PREPARED")});
}

void together3(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B", "C"});
  const auto b = world.prepared(world.b, 21, {"A", "C"});
  const auto c = world.prepared(world.c, 31, {"A", "B"});
  world.subject.forget();
  expectEqual("results of B alone", world.cycle({&b}), Results{WAIT});
  expectEqual("results of A and B", world.cycle({&a, &b}), (Results{WAIT, WAIT}));
  expectEqual("traces", world.subject.traces(),
              Texts{joinInfo("joinAndWait", "B", 1, "B has joined"), joinInfo("joinAndWait", "A", 1, "A has joined")});
  world.subject.forget();
  expectEqual("results of all in the cycle of the last join", world.cycle({&a, &b, &c}), (Results{WAIT, WAIT, WAIT}));
  expectEqual("traces of the last join", world.subject.traces(), Texts{joinInfo("joinAndWait", "C", 1, "C has joined")});
  world.subject.forget();
  expectEqual("results of all in the next cycle", world.cycle({&a, &b, &c}), (Results{DONE, DONE, DONE}));
  const std::string complete = "join complete";
  expectEqual("traces of the end", world.subject.traces(),
              Texts{joinInfo("joinAndWait", "A", 1, complete), joinInfo("joinAndWait", "B", 1, complete),
                    joinInfo("joinAndWait", "C", 1, complete)});
}

/// Prepared in one order, called by the host in another.
void anyOrder(const Bundle& bundle) {
  std::vector<int> preparing = {0, 1, 2};
  do {
    std::vector<int> running = {0, 1, 2};
    do {
      JoinWorld world(bundle);
      std::array<JoinWorld::Cmd, 3> cmds;
      const std::array<test::FakeObj*, 3> objs = {&world.a, &world.b, &world.c};
      const std::vector<std::vector<std::string>> groups = {{"C", "B"}, {"C", "B", "A"}, {"A", "B"}};
      for (const int i : preparing) {
        const auto index = static_cast<std::size_t>(i);
        expectEqual("number of the occurrence", world.prepare(cmds[index], *objs[index], 11 + index, groups[index]), 1U);
      }
      const auto at = [&](std::size_t i) { return &cmds[static_cast<std::size_t>(running[i])]; };
      world.expectMeeting({at(0), at(1), at(2)});
    } while (std::ranges::next_permutation(running).found);
  } while (std::ranges::next_permutation(preparing).found);
}

void lateMember(const Bundle& bundle, bool isFirstLate) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  for (int i = 0; i < 5; ++i) {
    expectEqual("results of one", world.cycle({isFirstLate ? &b : &a}), Results{WAIT});
  }
  world.expectMeeting({&a, &b});
}

void preparedLate(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  world.expectNoMeeting({&a});
  const auto b = world.prepared(world.b, 21, {"A"});
  world.expectNoMeeting({&a});
  world.expectMeeting({&a, &b});
}

void missedCycle(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  expectEqual("results in the cycle in which all join", world.cycle({&a, &b}), (Results{WAIT, WAIT}));
  expectEqual("results of B alone", world.cycle({&b}), Results{DONE});
  world.subject.forget();
  world.expectNoMeeting({&a});
  expectEqual("traces", world.subject.traces(), Texts{});
}

/// Objects count their cycles for themselves; the last one to join says which cycle it is.
void countOfTheLast(const Bundle& bundle) {
  JoinWorld world(bundle);
  world.a.m_cycleCount = 100;
  world.b.m_cycleCount = 200;
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  expectEqual("results", world.cycle({&a, &b}), (Results{WAIT, WAIT}));
  expectEqual("results when only B counts 202", world.cycle({&a, &b}), (Results{WAIT, DONE}));
  world.a.m_cycleCount = 202;
  expectEqual("result of A when it counts 202", (*a).cycle(), DONE);
  world.a.m_cycleCount = 203;
  expectEqual("result of A when it counts 203", (*a).cycle(), WAIT);
}

void wrappingCount(const Bundle& bundle) {
  JoinWorld world(bundle);
  world.a.m_cycleCount = world.b.m_cycleCount = 0xFFFFFFFEU;
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  world.expectMeeting({&a, &b});
  expectEqual("cycle count", world.a.m_cycleCount, 0x100000000U);
}

void duplicates(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B", "B"});
  const auto b = world.prepared(world.b, 21, {"A", "B", "B"});
  expectEqual("traces", world.subject.traces(),
              Texts{joinInfo("registerForJoin", "A", 1, "group=[A,B,B], syncStartnextCmd=false, command PREPARED"),
                    joinInfo("registerForJoin", "B", 1, "group=[A,B,B], syncStartnextCmd=false, command PREPARED")});
  world.expectNoMeeting({&a, &b});
}

void queued(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a1 = world.prepared(world.a, 11, {"B"});
  const auto a2 = world.prepared(world.a, 12, {"B"});
  const auto b1 = world.prepared(world.b, 21, {"A"});
  const auto b2 = world.prepared(world.b, 22, {"A"});
  world.expectMeeting({&a1, &b1});
  world.expectMeeting({&a2, &b2});
}

void setNext(test::FakeObj& obj, std::uint64_t current, std::uint64_t latestPrepared) {
  obj.m_currentCmdID = current;
  obj.m_latestPreparedCmdID = latestPrepared;
}

void waitsForNext(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"}, true);
  const auto b = world.prepared(world.b, 21, {"A"}, false);
  setNext(world.a, 11, 11);
  world.subject.forget();
  expectEqual("result before execution", a->begin(), WAIT);
  expectEqual("traces before execution", world.subject.traces(),
              Texts{joinInfo("joinPreExecute", "A", 1, "wait for next prepared command")});
  world.subject.forget();
  expectEqual("results", world.cycle({&a, &b}), (Results{WAIT, WAIT}));
  world.expectNoMeeting({&a, &b});
  expectEqual("traces meanwhile", world.subject.traces(), Texts{joinInfo("joinAndWait", "B", 1, "B has joined")});
  world.subject.forget();
  setNext(world.a, 11, 12);
  expectEqual("results", world.cycle({&a, &b}), (Results{WAIT, WAIT}));
  expectEqual("traces", world.subject.traces(),
              Texts{joinInfo("joinAndWait", "A", 1, "finished waiting for next prepared command"),
                    joinInfo("joinAndWait", "A", 1, "A has joined")});
  setNext(world.a, 11, 11);
  expectEqual("results behind it", world.cycle({&a, &b}), (Results{DONE, DONE}));
}

void nextIsThere(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"}, true);
  setNext(world.a, 11, 12);
  world.subject.forget();
  expectEqual("result before execution", a->begin(), WAIT);
  expectEqual("result of a second call", a->begin(), WAIT);
  expectEqual("traces", world.subject.traces(),
              Texts{joinInfo("joinPreExecute", "A", 1, "next prepared command is available")});
  world.subject.forget();
  expectEqual("results", world.cycle({&a}), Results{WAIT});
  expectEqual("traces", world.subject.traces(), Texts{joinInfo("joinAndWait", "A", 1, "A has joined")});
}

void withoutFlag(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  setNext(world.a, 11, 11);
  world.subject.forget();
  expectEqual("result before execution", a->begin(), WAIT);
  expectEqual("traces", world.subject.traces(), Texts{});
  expectEqual("results", world.cycle({&a}), Results{WAIT});
  expectEqual("traces", world.subject.traces(), Texts{joinInfo("joinAndWait", "A", 1, "A has joined")});
}

void allNextCommands(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"}, true);
  const auto b = world.prepared(world.b, 21, {"A"}, true);
  setNext(world.a, 11, 12);
  setNext(world.b, 21, 21);
  expectEqual("results before execution", (Results{a->begin(), b->begin()}), (Results{WAIT, WAIT}));
  world.expectNoMeeting({&a, &b});
  setNext(world.b, 21, 22);
  world.expectMeeting({&a, &b});
}

/// When a member is aborted.
enum class Moment { PREPARED, JOINED, ALL_JOINED };

void aborted(const Bundle& bundle, Moment moment) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  if (moment == Moment::JOINED) {
    expectEqual("results", world.cycle({&a}), Results{WAIT});
  } else if (moment == Moment::ALL_JOINED) {
    expectEqual("results", world.cycle({&a, &b}), (Results{WAIT, WAIT}));
  }
  world.subject.forget();
  a->changeState(CmdState::ABORTED);
  expectEqual("traces", world.subject.traces(), Texts{warningOf("job_obj_join", "onAbort", "A: joinCmd seq=1: ABORTED")});
  world.expectNoMeeting({&b});
  world.expectNoMeeting({&a, &b});
}

void joinsAfterAbort(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  a->changeState(CmdState::ABORTED);
  world.subject.forget();
  world.expectNoMeeting({&b});
  expectEqual("traces", world.subject.traces(), Texts{joinInfo("joinAndWait", "B", 1, "B has joined")});
}

void abortedTwice(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  world.subject.forget();
  a->changeState(CmdState::ABORTED);
  a->changeState(CmdState::ABORTED);
  b->changeState(CmdState::ABORTED);
  expectEqual("traces", world.subject.traces(),
              Texts{warningOf("job_obj_join", "onAbort", "A: joinCmd seq=1: ABORTED"),
                    warningOf("job_obj_join", "onAbort", "B: joinCmd seq=1: ABORTED")});
}

void abortedBeforePrepared(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.buffered(world.a, 11, {"B"});
  a->giveJobs();
  world.subject.forget();
  a->changeState(CmdState::ABORTED);
  expectEqual("traces", world.subject.traces(), Texts{});
}

void abortedAfterEnd(const Bundle& bundle) {
  JoinWorld world(bundle);
  const auto a = world.prepared(world.a, 11, {"B"});
  const auto b = world.prepared(world.b, 21, {"A"});
  expectEqual("results in the cycle in which all join", world.cycle({&a, &b}), (Results{WAIT, WAIT}));
  expectEqual("result of A", world.cycle({&a}), Results{DONE});
  a->changeState(CmdState::ABORTED);
  expectEqual("result of B in the same cycle", b->cycle(), WAIT);
}

Checks abortChecks() {
  return {
      {"join.aborted-when-prepared", "a join never ends once a prepared member is aborted",
       [](const Bundle& bundle) { aborted(bundle, Moment::PREPARED); }},
      {"join.aborted-when-joined", "a join never ends once a member that has joined is aborted",
       [](const Bundle& bundle) { aborted(bundle, Moment::JOINED); }},
      {"join.aborted-in-the-last-cycle", "a join never ends once a member is aborted just before the end",
       [](const Bundle& bundle) { aborted(bundle, Moment::ALL_JOINED); }},
      {"join.joins-after-abort", "members of an aborted join still tell that they have joined", joinsAfterAbort},
      {"join.aborted-twice", "each member tells its abort once", abortedTwice},
      {"join.aborted-before-prepared", "an abort before the preparation is silent", abortedBeforePrepared},
      {"join.aborted-within-the-last-cycle", "members whose turn comes after an abort do not end", abortedAfterEnd},
  };
}

}  // namespace

Checks joinChecks() {
  const Checks meeting = {
      {"join.prepared", "a prepared member tells occurrence, group and flag", preparedTraces},
      {"join.all-at-once", "all members end one cycle after the last one has joined, and tell each step", together3},
      {"join.any-order", "members meet in whatever order they are prepared, called and written", anyOrder},
      {"join.first-is-late", "a member that is called late is waited for",
       [](const Bundle& bundle) { lateMember(bundle, true); }},
      {"join.second-is-late", "a member that is called late is waited for",
       [](const Bundle& bundle) { lateMember(bundle, false); }},
      {"join.prepared-late", "a member that is not prepared is waited for, and so is one that is only prepared",
       preparedLate},
      {"join.missed-cycle", "a member that misses the very cycle of the end never ends", missedCycle},
      {"join.count-of-the-last", "the cycle of the end is one more than the count of the object that joined last",
       countOfTheLast},
      {"join.long-count", "cycles are counted in 64 bits", wrappingCount},
      {"join.duplicates", "a group with an object twice never ends", duplicates},
      {"join.queued", "joins in a buffer end one after the other", queued},
      {"join.next-command", "with the flag a member joins only when its next command is prepared, and waits once",
       waitsForNext},
      {"join.next-command-is-there", "a next command that is there already is noticed once, before execution", nextIsThere},
      {"join.without-flag", "without the flag nothing happens before execution", withoutFlag},
      {"join.all-next-commands", "nobody is released before all next commands are prepared", allNextCommands},
  };
  return together({joinCommandChecks(), joinJobObjectChecks(), meeting, abortChecks(), joinOccurrenceChecks()});
}

}  // namespace motion::conformance
