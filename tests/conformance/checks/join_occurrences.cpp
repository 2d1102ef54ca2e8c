// Which joins of several members belong together.
#include <array>

#include "conformance/checks/motion_parts.h"
#include "conformance/expect.h"
#include "conformance/join_world.h"

namespace motion::conformance {
namespace {

using core::cmd::CmdState;
using Cmd = JoinWorld::Cmd;
using Group = std::vector<std::string>;

const Group A = {"A"};
const Group B = {"B"};
const Group C = {"C"};

void expectNumber(const std::string& who, std::uint32_t found, std::uint32_t expected) {
  expectEqual("number of the occurrence of " + who, found, expected);
}

void inOrder(const Bundle& bundle) {
  JoinWorld world(bundle);
  std::array<Cmd, 3> a;
  std::array<Cmd, 3> b;
  for (std::uint32_t i = 0; i < 3; ++i) {
    expectNumber("A", world.prepare(a.at(i), world.a, 11 + i, B), i + 1);
  }
  for (std::uint32_t i = 0; i < 3; ++i) {
    expectNumber("B", world.prepare(b.at(i), world.b, 21 + i, A), i + 1);
  }
  Cmd a4;
  expectNumber("A once more", world.prepare(a4, world.a, 14, B), 4);
}

void eitherFirst(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, a2, b1, b2;
  expectNumber("A's first", world.prepare(a1, world.a, 11, B), 1);
  expectNumber("B's first", world.prepare(b1, world.b, 21, A), 1);
  expectNumber("B's second", world.prepare(b2, world.b, 22, A), 2);
  expectNumber("A's second", world.prepare(a2, world.a, 12, B), 2);
}

void threeMembers(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, a2, b1, b2, c1, c2;
  expectNumber("A's first", world.prepare(a1, world.a, 11, {"B", "C"}), 1);
  expectNumber("A's second", world.prepare(a2, world.a, 12, {"B", "C"}), 2);
  expectNumber("B's first", world.prepare(b1, world.b, 21, {"A", "C"}), 1);
  expectNumber("B's second", world.prepare(b2, world.b, 22, {"A", "C"}), 2);
  expectNumber("C's first", world.prepare(c1, world.c, 31, {"A", "B"}), 1);
  expectNumber("C's second", world.prepare(c2, world.c, 32, {"A", "B"}), 2);
  world.expectMeeting({&a1, &b1, &c1});
  world.expectMeeting({&a2, &b2, &c2});
}

void otherGroups(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd ab, ac, abc, c, b, cb;
  expectNumber("A with B", world.prepare(ab, world.a, 11, B), 1);
  expectNumber("A with C", world.prepare(ac, world.a, 12, C), 2);
  expectNumber("A with B and C", world.prepare(abc, world.a, 13, {"B", "C"}), 3);
  expectNumber("C with A", world.prepare(c, world.c, 31, A), 2);
  expectNumber("B with A", world.prepare(b, world.b, 21, A), 1);
  expectNumber("C with B", world.prepare(cb, world.c, 32, B), 4);
  world.expectMeeting({&ac, &c});
  world.expectMeeting({&ab, &b});
}

void afterAbort(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, a2, b1;
  expectNumber("A's first", world.prepare(a1, world.a, 11, B), 1);
  a1->changeState(CmdState::ABORTED);
  expectNumber("A's second", world.prepare(a2, world.a, 12, B), 2);
  expectNumber("B's first", world.prepare(b1, world.b, 21, A), 2);
  world.expectMeeting({&a2, &b1});
}

void partnerAfterAbort(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, a2, b1;
  expectNumber("A's first", world.prepare(a1, world.a, 11, B), 1);
  a1->changeState(CmdState::ABORTED);
  expectNumber("B's first", world.prepare(b1, world.b, 21, A), 2);
  expectNumber("A's second", world.prepare(a2, world.a, 12, B), 2);
}

/// The object reports the abort, but nobody has told the command.
void abortedByState(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, b1, a2;
  expectNumber("A's first", world.prepare(a1, world.a, 11, B), 1);
  world.a.m_cmdStates[11] = CmdState::ABORTED;
  expectNumber("B's first", world.prepare(b1, world.b, 21, A), 2);
  expectNumber("A's second", world.prepare(a2, world.a, 12, B), 2);
  world.expectMeeting({&a2, &b1});
}

/// Found by whoever prepares next, whatever its group.
void abortedByStateForOthers(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, c1, b1;
  expectNumber("A with B", world.prepare(a1, world.a, 11, B), 1);
  world.a.m_cmdStates[11] = CmdState::ABORTED;
  expectNumber("C with B", world.prepare(c1, world.c, 31, B), 2);
  world.a.m_cmdStates[11] = CmdState::ACTIVE;
  expectNumber("B with A", world.prepare(b1, world.b, 21, A), 3);
}

void olderIsAborted(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, a2, b1;
  expectNumber("A's first", world.prepare(a1, world.a, 11, B), 1);
  expectNumber("A's second", world.prepare(a2, world.a, 12, B), 2);
  world.a.m_cmdStates[11] = CmdState::ABORTED;
  expectNumber("B's first", world.prepare(b1, world.b, 21, A), 2);
  world.expectMeeting({&a2, &b1});
}

void otherAbortsDoNotMatter(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd ab, ac, b;
  expectNumber("A with B", world.prepare(ab, world.a, 11, B), 1);
  expectNumber("A with C", world.prepare(ac, world.a, 12, C), 2);
  ac->changeState(CmdState::ABORTED);
  expectNumber("B with A", world.prepare(b, world.b, 21, A), 1);
  world.expectMeeting({&ab, &b});
}

void newestIsGone(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a, c, b;
  expectNumber("A with B", world.prepare(a, world.a, 11, B), 1);
  expectNumber("C with B", world.prepare(c, world.c, 31, B), 2);
  c.reset();
  expectNumber("B with A", world.prepare(b, world.b, 21, A), 3);
}

void middleIsGone(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd ab, c, ac, ca, b;
  expectNumber("A with B", world.prepare(ab, world.a, 11, B), 1);
  expectNumber("C with B", world.prepare(c, world.c, 31, B), 2);
  expectNumber("A with C", world.prepare(ac, world.a, 12, C), 3);
  c.reset();
  expectNumber("B with A", world.prepare(b, world.b, 21, A), 4);
  expectNumber("C with A", world.prepare(ca, world.c, 32, A), 3);
}

void oldestIsGone(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd c, ab, b;
  expectNumber("C with B", world.prepare(c, world.c, 31, B), 1);
  expectNumber("A with B", world.prepare(ab, world.a, 11, B), 2);
  c.reset();
  expectNumber("B with A", world.prepare(b, world.b, 21, A), 2);
  world.expectMeeting({&ab, &b});
}

void allLinkedIsGone(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, b1, ac, c;
  expectNumber("A with C", world.prepare(ac, world.a, 11, C), 1);
  expectNumber("A with B", world.prepare(a1, world.a, 12, B), 2);
  expectNumber("B with A", world.prepare(b1, world.b, 21, A), 2);
  a1.reset();
  b1.reset();
  expectNumber("C with A", world.prepare(c, world.c, 31, A), 1);
}

void ownedByJobs(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, a2, b;
  expectNumber("A's first", world.prepare(a1, world.a, 11, B), 1);
  a1.reset();
  expectNumber("A's second", world.prepare(a2, world.a, 12, B), 2);
  expectNumber("B's first", world.prepare(b, world.b, 21, A), 2);
}

void afterRestart(const Bundle& bundle) {
  JoinWorld world(bundle);
  Cmd a1, b1, a2;
  expectNumber("A in the first life", world.prepare(a1, world.a, 11, B), 1);
  expectEqual("status of stop", world.subject.component().stop(), 0);
  world.subject.start();
  expectNumber("B in the second life", world.prepare(b1, world.b, 21, A), 1);
  expectNumber("A in the second life", world.prepare(a2, world.a, 12, B), 1);
  world.expectMeeting({&a2, &b1});
}

}  // namespace

Checks joinOccurrenceChecks() {
  return {
      {"join.occurrences-in-order", "joins of one member fill the occurrences in the order in which they were opened",
       inOrder},
      {"join.occurrences-either-first", "whoever comes first opens the next occurrence", eitherFirst},
      {"join.occurrences-of-three", "an occurrence in which a member is linked already is passed over", threeMembers},
      {"join.occurrences-of-groups", "each group has occurrences of its own; numbers are shared", otherGroups},
      {"join.occurrence-after-abort", "an aborted occurrence is found no more by its own member", afterAbort},
      {"join.occurrence-after-partner-abort", "an aborted occurrence is found no more by a partner", partnerAfterAbort},
      {"join.occurrence-aborted-by-state", "an occurrence with a member whose object reports an abort is found no more",
       abortedByState},
      {"join.occurrence-purged-by-others", "a preparation for any group looks for aborted members in all occurrences",
       abortedByStateForOthers},
      {"join.older-occurrence-aborted", "an older occurrence that was aborted is passed over", olderIsAborted},
      {"join.occurrence-of-others-aborted", "an abort concerns its own occurrence only", otherAbortsDoNotMatter},
      {"join.newest-is-gone", "behind a newest occurrence that died no other is found", newestIsGone},
      {"join.middle-is-gone", "behind an occurrence that died no older one is found", middleIsGone},
      {"join.oldest-is-gone", "an oldest occurrence that died hides nothing", oldestIsGone},
      {"join.complete-is-gone", "an occurrence that was linked completely hides nothing when it dies", allLinkedIsGone},
      {"join.owned-by-jobs", "an occurrence dies with its last job object", ownedByJobs},
      {"join.restart", "after a restart numbers begin at 1, and open joins are forgotten", afterRestart},
  };
}

}  // namespace motion::conformance
