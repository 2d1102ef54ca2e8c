// The graph of waits in words (host/observe/wait_text.cpp).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/observe/wait_graph.h"
#include "record_builder.h"

namespace motion::host::observe {
namespace {

using testing::HasSubstr;
using testing::Not;

std::string explained(const RunRecord& record) {
  return explain(record, makeWaitGraph(record));
}

TEST(WaitText, IsEmptyWhenNobodyWaits) {
  EXPECT_EQ(explained(recordOf({{"A", {since(1, works())}}})), "");
}

TEST(WaitText, TellsAWaitForASignalThatNobodyWrites) {
  EXPECT_EQ(explained(recordOf({{"A", {since(5, waitsSet(7))}}})),
            "  A waits in A#1 Wait (line 11) since cycle 5 for signal 7\n"
            "    no other object has a command left that would set it\n"
            "  needs a write from outside: signal 7");
  EXPECT_THAT(explained(withSignal(recordOf({{"A", {since(5, waitsReset(7))}}}), 7, true)),
              HasSubstr("    no other object has a command left that would reset it\n"));
}

TEST(WaitText, NamesTheSignalsThatAreNeeded) {
  RunRecord record = recordOf({{"A", {since(5, waitsSet(7))}}, {"B", {since(5, waitsSet(2))}}});
  record.signalNames.resize(100);
  record.signalNames[7] = "part in place";
  EXPECT_THAT(explained(record), HasSubstr("\n  needs a write from outside: signal 2, signal 7 'part in place'"));
}

TEST(WaitText, LeavesOutWhatItDoesNotKnow) {
  RunRecord record = recordOf({{"A", {since(5, waitsSet(7))}}});
  record.objects[0].commands[0].waitsFor.clear();
  EXPECT_THAT(explained(record), HasSubstr("since cycle 5\n"));
}

TEST(WaitText, TellsWhereThoseAreWhoWouldRelease) {
  EXPECT_EQ(explained(recordOf({{"A", {since(5, waitsSet(7))}},
                                {"B", {since(6, waitsSet(8)), ahead(sets(7))}},
                                {"C", {since(7, works()), ahead(sets(7))}},
                                {"D", {ahead(sets(7))}}})),
            "  A waits in A#1 Wait (line 11) since cycle 5 for signal 7\n"
            "    B#2 Set (line 22) would set it, but B waits in B#1\n"
            "    C#2 Set (line 32) would set it, but C is busy in C#1\n"
            "    D#1 Set (line 41) would set it, but D has not begun it\n"
            "  B waits in B#1 Wait (line 21) since cycle 6 for signal 8\n"
            "    no other object has a command left that would set it\n"
            "  needs a write from outside: signal 8");
}

TEST(WaitText, TellsWhoArrivedAndWhyMembersAreMissing) {
  const SyncStep join = joins({0, 1, 2, 3, 4, 5, 6});
  EXPECT_EQ(explained(recordOf({{"A", {since(9, join)}},
                                {"B", {since(1, works()), ahead(join)}},
                                {"C", {}},
                                {"D", {aborted(join, 3, 8)}},
                                {"E", {since(4, joins({0, 1, 2, 3, 4, 5, 6}, true))}},
                                {"F", {since(8, join)}},
                                {"G", {failed(join, 3, 8)}}})),
            "  A waits in A#1 Join (line 11) since cycle 9 for B, C, D, E, F, G\n"
            "    arrived: F in cycle 8, A in cycle 9, who was the last\n"
            "    missing: B, who has yet to come to B#2 Join (line 22), but B is busy in B#1\n"
            "    missing: C, who has no join with this group left\n"
            "    missing: D, whose D#1 Join (line 41) was aborted\n"
            "    missing: E, who is at E#1 Join (line 51), but waits for a command behind it (syncStartNextCmd)\n"
            "    missing: G, whose G#1 Join (line 71) failed\n"
            "  E waits in E#1 Join (line 51) since cycle 4 for A, B, C, D, F, G\n"
            "    arrived: F in cycle 8, A in cycle 9, who was the last\n"
            "    missing: B, who has yet to come to B#2 Join (line 22), but B is busy in B#1\n"
            "    missing: C, who has no join with this group left\n"
            "    missing: D, whose D#1 Join (line 41) was aborted\n"
            "    missing: E, who is at E#1 Join (line 51), but waits for a command behind it (syncStartNextCmd)\n"
            "    missing: G, whose G#1 Join (line 71) failed\n"
            "  F waits in F#1 Join (line 61) since cycle 8 for A, B, C, D, E, G\n"
            "    the same join as that of A\n"
            "  certain deadlock of A, E, F: no write from outside can help");
}

TEST(WaitText, TellsASingleArrivalWithoutSayingWhoWasLast) {
  const std::string text = explained(recordOf({{"A", {since(9, joins({0, 1}))}}, {"B", {}}}));
  EXPECT_THAT(text, HasSubstr("    arrived: A in cycle 9\n"));
}

TEST(WaitText, TellsAJoinWithNobodyThere) {
  const std::string text = explained(recordOf({{"A", {since(9, joins({0, 1}, true))}}, {"B", {}}}));
  EXPECT_THAT(text, Not(HasSubstr("arrived")));
  EXPECT_THAT(text, HasSubstr("    missing: A, who is at A#1 Join (line 11), but waits for a command behind it"));
}

TEST(WaitText, TellsAGroupThatNamesSomebodyTwice) {
  const std::string text =
      explained(recordOf({{"A", {since(9, joinsTwice({0, 1}))}}, {"B", {since(9, joinsTwice({0, 1}))}}}));
  EXPECT_EQ(text,
            "  A waits in A#1 Join (line 11) since cycle 9 for B\n"
            "    its group names an object twice; such a join never completes\n"
            "    arrived: A in cycle 9, B in cycle 9, who was the last\n"
            "  B waits in B#1 Join (line 21) since cycle 9 for A\n"
            "    its group names an object twice; such a join never completes\n"
            "    arrived: A in cycle 9, B in cycle 9, who was the last\n"
            "  certain deadlock of A, B: no write from outside can help");
}

TEST(WaitText, TellsAJoinThatAnAbortToreApart) {
  EXPECT_EQ(explained(recordOf({{"A", {since(9, joins({0, 1}))}}, {"B", {since(8, joins({0, 1}))}}})),
            "  A waits in A#1 Join (line 11) since cycle 9 for B\n"
            "    arrived: B in cycle 8, A in cycle 9, who was the last\n"
            "    all have arrived, but not in the same occurrence, because another join was aborted meanwhile\n"
            "  B waits in B#1 Join (line 21) since cycle 8 for A\n"
            "    the same join as that of A\n"
            "  certain deadlock of A, B: no write from outside can help");
}

TEST(WaitText, JoinsOfOtherGroupsAreToldEachForItself) {
  const std::string text =
      explained(recordOf({{"A", {since(9, joins({0, 2}))}}, {"B", {since(9, joins({1, 2}))}}, {"C", {}}}));
  EXPECT_THAT(text, Not(HasSubstr("the same join")));
}

TEST(WaitText, AMemberThatIsThroughAndJoinsOthersIsInAnotherJoin) {
  const SyncStep join = joins({0, 1, 2});
  const std::string text = explained(recordOf({{"A", {since(3, join)}},
                                               {"B", {done(join, 3, 5), since(6, joins({1, 3}))}},
                                               {"C", {aborted(join, 4, 5)}},
                                               {"D", {}}}));
  EXPECT_THAT(text, HasSubstr("  B waits in B#2 Join (line 22) since cycle 6 for D\n    arrived: B in cycle 6\n"));
}

TEST(WaitText, TellsTheCircleAndBothVerdicts) {
  const std::string text = explained(recordOf({{"A", {since(5, joins({0, 2})), ahead(joins({0, 1}))}},
                                               {"B", {since(8, joins({0, 1})), ahead(joins({1, 2}))}},
                                               {"C", {since(6, joins({1, 2})), ahead(joins({0, 2}))}},
                                               {"D", {since(7, waitsSet(1))}}}));
  EXPECT_THAT(text, HasSubstr("\n  circle: A waits for C, C waits for B, B waits for A; closed in cycle 8 by B\n"
                              "  certain deadlock of A, B, C: no write from outside can help\n"
                              "  needs a write from outside: signal 1"));
}

}  // namespace
}  // namespace motion::host::observe
