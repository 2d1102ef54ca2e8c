#include "host/observe/wait_graph.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "record_builder.h"

namespace motion::host::observe {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;
using Why = MissingMember::Why;

std::vector<std::uint32_t> waiting(const WaitGraph& graph) {
  std::vector<std::uint32_t> objects;
  for (const ObjectWait& wait : graph.waits) {
    objects.push_back(wait.object);
  }
  return objects;
}

/// "object#number" of all releasers.
std::vector<std::string> releasers(const ObjectWait& wait) {
  std::vector<std::string> texts;
  for (const Releaser& releaser : wait.releasers) {
    texts.push_back(std::to_string(releaser.object) + "#" + std::to_string(releaser.number));
  }
  return texts;
}

std::vector<Why> reasons(const ObjectWait& wait) {
  std::vector<Why> whys;
  for (const MissingMember& member : wait.missing) {
    whys.push_back(member.why);
  }
  return whys;
}

TEST(WaitGraph, HasOnlyWhoWaits) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {done(waitsSet(1), 1, 5)}},
                                                {"B", {done(works(), 1, 5), since(6, waitsSet(1))}},
                                                {"C", {since(1, works())}},
                                                {"D", {aborted(waitsSet(1), 1, 5), ahead(waitsSet(1))}},
                                                {"E", {}},
                                                {"F", {since(7, joins({2, 5}))}}}));
  EXPECT_THAT(waiting(sut), ElementsAre(1, 5));
  EXPECT_EQ(sut.waits[0].number, 2U);
  EXPECT_EQ(sut.waits[0].since, 6U);
  EXPECT_EQ(sut.waits[0].step, waitsSet(1));
  EXPECT_EQ(sut.find(1), &sut.waits[0]);
  EXPECT_EQ(sut.find(0), nullptr);
}

TEST(WaitGraph, AWaitForASignalKnowsTheNextOfEachObjectThatWouldSetIt) {
  const WaitGraph sut = makeWaitGraph(
      recordOf({{"A", {since(1, waitsSet(1)), ahead(sets(1))}},
                {"B", {done(sets(1), 1, 1), since(2, works()), ahead(sets(2)), buffered(sets(1)), created(sets(1))}},
                {"C", {since(1, works()), ahead(resets(1)), ahead(consumes(1)), ahead(waitsReset(1))}},
                {"D", {since(1, works()), created(sets(1))}}}));
  EXPECT_THAT(releasers(sut.waits.at(0)), ElementsAre("1#4", "3#2"));
}

TEST(WaitGraph, AWaitForAResetIsReleasedByResetsAndWaitsThatConsume) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(1, waitsReset(1))}},
                                                {"B", {since(1, works()), ahead(waitsSet(1)), ahead(resets(1))}},
                                                {"C", {since(1, works()), ahead(consumes(1))}},
                                                {"D", {since(1, works()), ahead(sets(1)), ahead(resets(2))}}}));
  EXPECT_THAT(releasers(sut.waits.at(0)), ElementsAre("1#3", "2#2"));
}

TEST(WaitGraph, WhatWasNotIssuedBeforeAnAbortReleasesNobody) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(1, waitsSet(1))}},
                                                {"B", {aborted(works(), 1, 5), created(sets(1))}},
                                                {"C", {failed(works(), 1, 5), created(sets(1))}}}));
  EXPECT_THAT(releasers(sut.waits.at(0)), IsEmpty());
}

TEST(WaitGraph, AJoinKnowsWhoArrivedInTheOrderOfArrival) {
  const SyncStep join = joins({0, 1, 2, 3});
  const WaitGraph sut = makeWaitGraph(recordOf(
      {{"A", {since(9, join)}}, {"B", {since(3, join)}}, {"C", {since(9, join)}}, {"D", {since(1, works()), ahead(join)}}}));
  const auto& arrived = sut.waits.at(0).arrived;
  ASSERT_THAT(arrived, SizeIs(3));
  EXPECT_EQ(arrived[0].object, 1U);
  EXPECT_EQ(arrived[0].cycle, 3U);
  EXPECT_EQ(arrived[1].object, 0U);
  EXPECT_EQ(arrived[2].object, 2U);
}

TEST(WaitGraph, AJoinKnowsWhyMembersAreMissing) {
  const SyncStep join = joins({0, 1, 2, 3, 4, 5, 6});
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(9, join)}},
                                                {"B", {since(1, works()), ahead(join)}},
                                                {"C", {since(1, works()), ahead(joins({0, 2}))}},
                                                {"D", {aborted(join, 3, 8)}},
                                                {"E", {since(4, joins({0, 1, 2, 3, 4, 5, 6}, true))}},
                                                {"F", {failed(works(), 1, 2), created(join)}},
                                                {"G", {failed(join, 1, 2)}}}));
  const ObjectWait& wait = sut.waits.at(0);
  EXPECT_THAT(reasons(wait), ElementsAre(Why::ON_ITS_WAY, Why::NO_SUCH_JOIN, Why::ENDED_OTHERWISE, Why::HAS_NO_NEXT_COMMAND,
                                         Why::NO_SUCH_JOIN, Why::ENDED_OTHERWISE));
  EXPECT_EQ(wait.missing[0].object, 1U);
  EXPECT_EQ(wait.missing[0].number, 2U);
  EXPECT_EQ(wait.missing[1].number, 0U);
}

TEST(WaitGraph, AMemberThatIsAtItsNextJoinHasNoneLeftForThisOne) {
  const WaitGraph sut = makeWaitGraph(
      recordOf({{"A", {done(joins({0, 1}), 1, 3), since(4, joins({0, 1}))}}, {"B", {done(joins({0, 1}), 2, 3)}}}));
  EXPECT_THAT(reasons(sut.waits.at(0)), ElementsAre(Why::NO_SUCH_JOIN));
}

TEST(WaitGraph, WhoWaitsForSomebodyWhoIsBusyIsNotStuck) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(1, waitsSet(1))}},
                                                {"B", {since(1, works()), ahead(sets(1)), created(joins({1, 2}))}},
                                                {"C", {since(1, joins({1, 2}))}}}));
  EXPECT_FALSE(sut.waits.at(0).isStuck);
  EXPECT_FALSE(sut.waits.at(0).isCertain);
  EXPECT_FALSE(sut.waits.at(1).isStuck);
  EXPECT_THAT(sut.neededSignals, IsEmpty());
  EXPECT_THAT(sut.circle, IsEmpty());
}

TEST(WaitGraph, AWaitForASignalCanBeHelpedFromOutside) {
  const WaitGraph sut = makeWaitGraph(
      recordOf({{"A", {since(1, waitsSet(7))}}, {"B", {since(1, waitsSet(3))}}, {"C", {since(1, waitsSet(7))}}}));
  for (const ObjectWait& wait : sut.waits) {
    EXPECT_TRUE(wait.isStuck);
    EXPECT_FALSE(wait.isCertain);
  }
  EXPECT_THAT(sut.neededSignals, ElementsAre(3, 7));
}

TEST(WaitGraph, WhoWaitsForAResetIsStuckOnlyWhileTheSignalIsSet) {
  const RunRecord record = recordOf({{"A", {since(1, waitsReset(7))}}});
  EXPECT_TRUE(makeWaitGraph(withSignal(record, 7, true)).waits.at(0).isStuck);
  EXPECT_FALSE(makeWaitGraph(withSignal(withSignal(record, 7, true), 7, false)).waits.at(0).isStuck);
}

TEST(WaitGraph, WhoStandsBehindAWaitForASignalIsNotCertain) {
  const WaitGraph sut =
      makeWaitGraph(recordOf({{"A", {since(1, waitsSet(7)), ahead(joins({0, 1}))}}, {"B", {since(1, joins({0, 1}))}}}));
  EXPECT_TRUE(sut.waits.at(1).isStuck);
  EXPECT_FALSE(sut.waits.at(1).isCertain);
}

TEST(WaitGraph, AJoinThatNobodyCompletesIsCertain) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(1, joins({0, 1}))}}, {"B", {aborted(joins({0, 1}), 1, 4)}}}));
  EXPECT_TRUE(sut.waits.at(0).isStuck);
  EXPECT_TRUE(sut.waits.at(0).isCertain);
  EXPECT_THAT(sut.neededSignals, IsEmpty());
  EXPECT_THAT(sut.circle, IsEmpty());
}

TEST(WaitGraph, CountsTheJoinsThatAreOver) {
  const WaitGraph sut =
      makeWaitGraph(recordOf({{"A", {done(joins({0, 1}), 1, 3), since(4, joins({0, 1}))}},
                              {"B", {done(joins({0, 1}), 2, 3), since(4, works()), ahead(joins({0, 1}))}}}));
  EXPECT_FALSE(sut.waits.at(0).isStuck);
}

TEST(WaitGraph, AJoinWithAllMembersThereCompletesAtOnceOrIsTorn) {
  const std::vector<ObjectScript> objects{{"A", {since(3, joins({0, 1}))}}, {"B", {since(10, joins({0, 1}))}}};
  const WaitGraph atOnce = makeWaitGraph(recordOf(objects, 12));
  EXPECT_FALSE(atOnce.waits.at(0).isTorn);
  EXPECT_FALSE(atOnce.waits.at(0).isStuck);
  const WaitGraph sut = makeWaitGraph(recordOf(objects, 13));
  EXPECT_TRUE(sut.waits.at(0).isTorn);
  EXPECT_TRUE(sut.waits.at(0).isStuck);
  EXPECT_TRUE(sut.waits.at(0).isCertain);
  EXPECT_THAT(sut.circle, IsEmpty());
}

TEST(WaitGraph, AJoinThatNamesSomebodyTwiceIsNotTorn) {
  const WaitGraph sut =
      makeWaitGraph(recordOf({{"A", {since(3, joinsTwice({0, 1}))}}, {"B", {since(10, joinsTwice({0, 1}))}}}));
  EXPECT_FALSE(sut.waits.at(0).isTorn);
  EXPECT_TRUE(sut.waits.at(0).isCertain);
}

TEST(WaitGraph, FindsTheShortestCircleAndWhoClosedIt) {
  // A waits for B, B for C, C for A and D, D for C.
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(10, waitsSet(1)), ahead(joins({0, 2, 3}))}},
                                                {"B", {since(40, waitsSet(2)), ahead(sets(1))}},
                                                {"C", {since(30, joins({0, 2, 3})), ahead(sets(2)), ahead(sets(4))}},
                                                {"D", {since(20, waitsSet(4)), ahead(joins({0, 2, 3}))}}}));
  EXPECT_THAT(sut.circle, ElementsAre(2, 3));
  EXPECT_EQ(sut.circleSince, 30U);
  EXPECT_EQ(sut.circleClosedBy, 2U);
}

TEST(WaitGraph, FindsALongCircle) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"X", {since(99, joins({0, 1})), ahead(works())}},
                                                {"A", {since(10, waitsSet(1)), ahead(sets(3)), ahead(joins({0, 1}))}},
                                                {"B", {since(50, waitsSet(2)), ahead(sets(1))}},
                                                {"C", {since(20, waitsSet(3)), ahead(sets(2))}}}));
  EXPECT_THAT(sut.circle, ElementsAre(1, 2, 3));
  EXPECT_EQ(sut.circleSince, 50U);
  EXPECT_EQ(sut.circleClosedBy, 2U);
}

TEST(WaitGraph, ACircleThatSomebodyElseMayOpenIsNone) {
  // A and B wait for each other's signal, but C is on its way to set one of them.
  const std::vector<ObjectScript> objects{{"A", {since(1, waitsSet(1)), ahead(sets(2))}},
                                          {"B", {since(1, waitsSet(2)), ahead(sets(1))}}};
  EXPECT_THAT(makeWaitGraph(recordOf(objects)).circle, ElementsAre(0, 1));
  std::vector<ObjectScript> withHelp = objects;
  withHelp.push_back({"C", {since(1, works()), ahead(sets(2))}});
  const WaitGraph sut = makeWaitGraph(recordOf(withHelp));
  EXPECT_THAT(sut.circle, IsEmpty());
  EXPECT_EQ(sut.circleSince, 0U);
}

// Options

TEST(WaitGraph, AnOptionOfACommandToComeReleases) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(1, waitsSet(1))}},
                                                {"B", {since(1, works()), ahead(with(works(), {{1, true, false}}))}},
                                                {"C", {since(1, works()), buffered(with(works(), {{1, true, true}}))}},
                                                {"D", {since(1, works()), created(with(works(), {{1, false, true}}))}}}));
  EXPECT_THAT(releasers(sut.waits.at(0)), ElementsAre("1#2", "2#2"));
}

TEST(WaitGraph, OfACommandThatHasBegunOnlyOptionsOnThePathRelease) {
  const WaitGraph sut = makeWaitGraph(recordOf({{"A", {since(1, waitsSet(1))}},
                                                {"B", {since(1, with(works(), {{1, true, false}}))}},
                                                {"C", {since(1, with(works(), {{1, true, true}}))}}}));
  EXPECT_THAT(releasers(sut.waits.at(0)), ElementsAre("2#1"));
}

TEST(WaitGraph, AnOptionReleasesWhoWaitsForAReset) {
  const WaitGraph sut = makeWaitGraph(
      withSignal(recordOf({{"A", {since(1, waitsReset(1))}},
                           {"B", {since(1, works()), ahead(with(works(), {{1, false, true}, {2, true, false}}))}},
                           {"C", {since(1, works()), ahead(with(works(), {{1, true, true}}))}}}),
                 1, true));
  EXPECT_THAT(releasers(sut.waits.at(0)), ElementsAre("1#2"));
}

}  // namespace
}  // namespace motion::host::observe
