// The joins of a run in words (host/observe/joins_text.cpp).
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "host/observe/joins.h"
#include "record_builder.h"

namespace motion::host::observe {
namespace {

using testing::HasSubstr;

TEST(JoinsText, IsEmptyWithoutJoins) {
  EXPECT_EQ(joinsText(recordOf({{"A", {done(works(), 1, 5)}}})), "");
}

TEST(JoinsText, TellsWhoArrivedWhenAndWhoWaitedForWhat) {
  CmdRecord late = done(works(), 22, 30);
  late.prepared = 15;
  const RunRecord record =
      recordOf({{"Feeder", {done(joins({0, 1}, true), 11, 21), late}}, {"Robot", {done(joins({0, 1}), 20, 21)}}});
  EXPECT_EQ(joinsText(record),
            "  [Feeder, Robot] no. 1: completed in cycle 21 (0.0200 s), Robot came last in cycle 20\n"
            "    Feeder#1       arrived in cycle 15, waited 4.000 ms for preparation, 6.000 ms for members\n"
            "    Robot#1        arrived in cycle 20, waited 0.000 ms for preparation, 1.000 ms for members\n");
}

TEST(JoinsText, TellsAnOccurrenceThatWasNotCompleted) {
  const RunRecord record = recordOf({{"A", {since(40, joins({0, 1, 2, 3, 4, 5}))}},
                                     {"B", {ahead(joins({0, 1, 2, 3, 4, 5}))}},
                                     {"C", {}},
                                     {"D", {aborted(joins({0, 1, 2, 3, 4, 5}), 30, 70)}},
                                     {"E", {aborted(joins({0, 1, 2, 3, 4, 5}), 0, 70)}},
                                     {"F", {since(90, joins({0, 1, 2, 3, 4, 5}, true))}}});
  EXPECT_EQ(joinsText(record),
            "  [A, B, C, D, E, F] no. 1: not completed\n"
            "    A#1            arrived in cycle 40, waited 0.000 ms for preparation, 60.000 ms for members\n"
            "    B#1            never began\n"
            "    C              has no such join\n"
            "    D#1            arrived in cycle 30, waited 0.000 ms for preparation, 40.000 ms for members, aborted\n"
            "    E#1            was aborted before it began\n"
            "    F#1            never arrived, waited 10.000 ms for preparation, 0.000 ms for members\n");
}

TEST(JoinsText, CountsTheOccurrences) {
  const RunRecord record = recordOf({{"A", {done(joins({0, 1}), 1, 3), done(joins({0, 1}), 4, 6)}},
                                     {"B", {done(joins({0, 1}), 2, 3), done(joins({0, 1}), 5, 6)}}});
  EXPECT_THAT(joinsText(record), HasSubstr("[A, B] no. 1: completed in cycle 3"));
  EXPECT_THAT(joinsText(record), HasSubstr("[A, B] no. 2: completed in cycle 6"));
}

TEST(JoinsText, DoesNotKnowWhoCameLastWhenThatEventWasLost) {
  const RunRecord record = recordOf({{"A", {done(joins({0, 1}), 1, 3)}}, {"B", {done(joins({0, 1}), 0, 3)}}});
  EXPECT_THAT(joinsText(record), HasSubstr("  [A, B] no. 1: completed in cycle 3 (0.0020 s)\n"));
}

TEST(JoinsText, CountsInTheCycleTimeOfTheRun) {
  RunRecord record = recordOf({{"A", {done(joins({0, 1}), 1, 11)}}, {"B", {done(joins({0, 1}), 10, 11)}}});
  record.cycleTime = 0.00025;
  EXPECT_THAT(joinsText(record), HasSubstr("completed in cycle 11 (0.0025 s)"));
  EXPECT_THAT(joinsText(record), HasSubstr("2.500 ms for members"));
}

}  // namespace
}  // namespace motion::host::observe
