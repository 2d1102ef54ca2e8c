#include "host/observe/outlook.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "record_builder.h"

namespace motion::host::observe {
namespace {

using testing::ElementsAre;

SignalOutlook noSignals() {
  SignalOutlook signals;
  signals.fill({.set = false, .reset = true});
  return signals;
}

using Steps = RemainingSteps;

std::vector<std::size_t> taken(const std::vector<Steps>& programs, const SignalOutlook& signals = noSignals()) {
  return lookAhead(programs, signals);
}

TEST(LookAhead, WithoutObjectsOrStepsThereIsNothingToTake) {
  EXPECT_THAT(taken({}), ElementsAre());
  EXPECT_THAT(taken({{}}), ElementsAre(0));
}

TEST(LookAhead, WhatWaitsForNobodyComesThrough) {
  EXPECT_THAT(taken({{works(), sets(1), resets(1), works()}}), ElementsAre(4));
}

TEST(LookAhead, AWaitStaysUntilItsVerySignalMayBeSet) {
  EXPECT_THAT(taken({{works(), waitsSet(1)}}), ElementsAre(1));
  EXPECT_THAT(taken({{waitsSet(1)}, {sets(2)}}), ElementsAre(0, 1));
  EXPECT_THAT(taken({{waitsSet(1)}, {sets(1)}}), ElementsAre(1, 1));
  EXPECT_THAT(taken({{waitsSet(1), sets(1)}}), ElementsAre(0));
}

TEST(LookAhead, ASignalThatWasSetOnceMayBeFoundSetByEverybody) {
  EXPECT_THAT(taken({{sets(1), resets(1)}, {consumes(1)}, {waitsSet(1)}}), ElementsAre(2, 1, 1));
}

TEST(LookAhead, AWaitForAResetStaysUntilSomebodyResets) {
  SignalOutlook signals = noSignals();
  signals[1] = {.set = true, .reset = false};
  EXPECT_THAT(taken({{waitsReset(1)}}, signals), ElementsAre(0));
  EXPECT_THAT(taken({{waitsReset(1)}, {resets(1)}}, signals), ElementsAre(1, 1));
  EXPECT_THAT(taken({{waitsReset(1)}, {consumes(1)}}, signals), ElementsAre(1, 1));
  EXPECT_THAT(taken({{waitsReset(1)}, {waitsSet(1)}}, signals), ElementsAre(0, 1));
  EXPECT_THAT(taken({{waitsReset(1)}, {resets(2)}}, signals), ElementsAre(0, 1));
}

TEST(LookAhead, AJoinWaitsForAllOfItsMembers) {
  EXPECT_THAT(taken({{joins({0, 1, 2})}, {works(), joins({0, 1, 2})}, {works()}}), ElementsAre(0, 1, 1));
  EXPECT_THAT(taken({{joins({0, 1, 2})}, {works(), joins({0, 1, 2})}, {joins({0, 1, 2}), works()}}), ElementsAre(1, 2, 2));
}

TEST(LookAhead, JoinsWithOtherGroupsDoNotMeet) {
  EXPECT_THAT(taken({{joins({0, 1})}, {joins({0, 1, 2})}, {joins({0, 1, 2})}}), ElementsAre(0, 0, 0));
}

TEST(LookAhead, JoinsInOppositeOrderNeverMeet) {
  const Steps either{joins({0, 1}), joins({0, 1, 2})};
  const Steps other{joins({0, 1, 2}), joins({0, 1})};
  EXPECT_THAT(taken({either, other, {joins({0, 1, 2})}}), ElementsAre(0, 0, 0));
}

TEST(LookAhead, JoinsReleaseWhatStandsBehindThem) {
  EXPECT_THAT(taken({{joins({0, 1}), sets(1)}, {joins({0, 1}), joins({1, 2})}, {waitsSet(1), joins({1, 2})}}),
              ElementsAre(2, 2, 2));
}

TEST(LookAhead, AGroupThatNamesSomebodyTwiceNeverCompletes) {
  EXPECT_THAT(taken({{joinsTwice({0, 1})}, {joins({0, 1})}}), ElementsAre(0, 0));
  EXPECT_THAT(taken({{joins({0, 1})}, {joinsTwice({0, 1})}}), ElementsAre(0, 0));
}

TEST(LookAhead, AJoinThatAwaitsTheNextCommandNeedsOne) {
  EXPECT_THAT(taken({{joins({0, 1}, true)}, {joins({0, 1})}}), ElementsAre(0, 0));
  EXPECT_THAT(taken({{joins({0, 1}, true), works()}, {joins({0, 1})}}), ElementsAre(2, 1));
  EXPECT_THAT(taken({{joins({0, 1})}, {joins({0, 1}, true)}}), ElementsAre(0, 0));
}

TEST(LookAhead, JoinsWithOneGroupMeetOneAfterTheOther) {
  const Steps twice{joins({0, 1}), joins({0, 1})};
  EXPECT_THAT(taken({twice, {works(), joins({0, 1}), waitsSet(1), joins({0, 1})}}), ElementsAre(1, 2));
  EXPECT_THAT(taken({twice, {works(), joins({0, 1}), works(), joins({0, 1})}}), ElementsAre(2, 4));
}

// Options

TEST(LookAhead, AnOptionSetsOrResetsWhileItsCommandIsThere) {
  EXPECT_THAT(taken({{waitsSet(1)}, {with(works(), {{1, true, false}})}}), ElementsAre(1, 1));
  EXPECT_THAT(taken({{waitsSet(1)}, {with(works(), {{2, true, false}, {1, true, true}})}}), ElementsAre(1, 1));
  EXPECT_THAT(taken({{waitsSet(1)}, {with(works(), {{1, false, true}})}}), ElementsAre(0, 1));
  SignalOutlook signals = noSignals();
  signals[1] = {.set = true, .reset = false};
  EXPECT_THAT(taken({{waitsReset(1)}, {with(works(), {{1, false, true}})}}, signals), ElementsAre(1, 1));
  EXPECT_THAT(taken({{waitsReset(1)}, {with(works(), {{1, true, true}})}}, signals), ElementsAre(0, 1));
}

TEST(LookAhead, AnOptionDoesItsWorkThoughItsCommandStays) {
  EXPECT_THAT(taken({{waitsSet(1), sets(2)}, {with(waitsSet(2), {{1, true, false}})}}), ElementsAre(2, 1));
  EXPECT_THAT(taken({{with(waitsSet(1), {{1, true, false}})}}), ElementsAre(1));
  EXPECT_THAT(taken({{with(joins({0, 1}), {{1, true, false}})}, {waitsSet(1), joins({0, 1})}}), ElementsAre(1, 2));
}

TEST(LookAhead, AnOptionOfACommandThatNobodyComesToDoesNothing) {
  EXPECT_THAT(taken({{waitsSet(1)}, {waitsSet(2), with(works(), {{1, true, false}})}}), ElementsAre(0, 0));
}

TEST(SyncStep, KnowsWhatItMaySetAndReset) {
  const SyncStep both = with(sets(1), {{2, false, true}, {3, true, false}});
  EXPECT_TRUE(both.maySet(1) && both.maySet(3) && both.mayReset(2));
  EXPECT_FALSE(both.maySet(2) || both.mayReset(1) || both.mayReset(3));
  EXPECT_TRUE(resets(1).mayReset(1) && consumes(1).mayReset(1));
  EXPECT_FALSE(waitsSet(1).mayReset(1) || consumes(1).mayReset(2) || waitsReset(1).mayReset(1) || works().maySet(0));
}

TEST(OccurrenceOf, CountsJoinsWithThatGroupOnly) {
  const Steps before{works(), joins({0, 1}), joins({0, 2}), sets(0), joins({0, 1})};
  EXPECT_EQ(occurrenceOf(joins({0, 1}), {}), 1U);
  EXPECT_EQ(occurrenceOf(joins({0, 1}), before), 3U);
  EXPECT_EQ(occurrenceOf(joins({0, 2}), before), 2U);
  EXPECT_EQ(occurrenceOf(joins({1, 2}), before), 1U);
}

}  // namespace
}  // namespace motion::host::observe
