#include "host/observe/joins.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "record_builder.h"

namespace motion::host::observe {
namespace {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::SizeIs;

TEST(FindJoins, FindsNoneWhereThereAreNone) {
  EXPECT_THAT(findJoins(recordOf({{"A", {done(works(), 1, 5), since(6, waitsSet(1))}}})), IsEmpty());
}

TEST(FindJoins, GathersTheMembersOfAnOccurrence) {
  const auto sut = findJoins(recordOf(
      {{"A", {done(works(), 1, 5), done(joins({0, 1}), 6, 21)}}, {"B", {done(joins({0, 1}), 20, 21), ahead(works())}}}));
  ASSERT_THAT(sut, SizeIs(1));
  EXPECT_THAT(sut[0].group, ElementsAre(0, 1));
  EXPECT_EQ(sut[0].occurrence, 1U);
  EXPECT_EQ(sut[0].completed, 21U);
  ASSERT_THAT(sut[0].members, SizeIs(2));
  const JoinMember& a = sut[0].members[0];
  EXPECT_EQ(a.object, 0U);
  EXPECT_EQ(a.number, 2U);
  EXPECT_EQ(a.active, 6U);
  EXPECT_EQ(a.arrived, 6U);
  EXPECT_EQ(a.ended, 21U);
  EXPECT_TRUE(a.done);
  EXPECT_FALSE(a.aborted);
  ASSERT_NE(sut[0].last(), nullptr);
  EXPECT_EQ(sut[0].last()->object, 1U);
}

TEST(FindJoins, CountsTheOccurrencesOfEachGroup) {
  const auto sut =
      findJoins(recordOf({{"A", {done(joins({0, 1}), 1, 11), done(joins({0, 2}), 12, 31), since(32, joins({0, 1}))}},
                          {"B", {done(joins({0, 1}), 10, 11), ahead(joins({0, 1}))}},
                          {"C", {done(joins({0, 2}), 30, 31)}}}));
  ASSERT_THAT(sut, SizeIs(3));
  EXPECT_THAT(sut[0].group, ElementsAre(0, 1));
  EXPECT_EQ(sut[0].occurrence, 1U);
  EXPECT_THAT(sut[1].group, ElementsAre(0, 2));
  EXPECT_EQ(sut[1].occurrence, 1U);
  EXPECT_THAT(sut[2].group, ElementsAre(0, 1));
  EXPECT_EQ(sut[2].occurrence, 2U);
  EXPECT_EQ(sut[2].completed, 0U);
  EXPECT_EQ(sut[2].members[1].number, 2U);
}

TEST(FindJoins, OrdersByCompletionAndThoseWithoutItLast) {
  const auto sut = findJoins(recordOf({{"A", {since(2, joins({0, 3}))}},
                                       {"B", {done(joins({1, 2}), 1, 9)}},
                                       {"C", {done(joins({1, 2}), 8, 9)}},
                                       {"D", {done(joins({3, 4}), 1, 4)}},
                                       {"E", {done(joins({3, 4}), 3, 4)}}}));
  ASSERT_THAT(sut, SizeIs(3));
  EXPECT_EQ(sut[0].completed, 4U);
  EXPECT_EQ(sut[1].completed, 9U);
  EXPECT_EQ(sut[2].completed, 0U);
}

TEST(FindJoins, AMemberWithoutSuchAJoinIsThereWithoutACommand) {
  const auto sut = findJoins(recordOf({{"A", {since(2, joins({0, 1}))}}, {"B", {}}}));
  ASSERT_THAT(sut, SizeIs(1));
  EXPECT_EQ(sut[0].members[1].object, 1U);
  EXPECT_EQ(sut[0].members[1].number, 0U);
  EXPECT_EQ(sut[0].completed, 0U);
  EXPECT_EQ(sut[0].last(), nullptr);
}

TEST(FindJoins, AbortedAndFailedMembersDoNotComplete) {
  const auto sut = findJoins(recordOf({{"A", {aborted(joins({0, 1}), 2, 7), aborted(joins({0, 2}), 0, 7)}},
                                       {"B", {since(5, joins({0, 1}))}},
                                       {"C", {failed(joins({0, 2}), 3, 4)}}}));
  ASSERT_THAT(sut, SizeIs(2));
  EXPECT_TRUE(sut[0].members[0].aborted);
  EXPECT_FALSE(sut[0].members[0].done);
  EXPECT_FALSE(sut[0].members[1].aborted);
  EXPECT_EQ(sut[0].completed, 0U);
  EXPECT_TRUE(sut[1].members[0].aborted);
  EXPECT_TRUE(sut[1].members[1].aborted);
}

TEST(FindJoins, WhatOnlySomeCompletedIsNotCompleted) {
  const auto sut = findJoins(recordOf({{"A", {done(joins({0, 1}), 3, 7)}}, {"B", {aborted(joins({0, 1}), 6, 7)}}}));
  ASSERT_THAT(sut, SizeIs(1));
  EXPECT_EQ(sut[0].completed, 0U);
}

TEST(FindJoins, WhoAwaitsTheNextCommandArrivesWhenThatIsPrepared) {
  CmdRecord late = ahead(works());
  late.prepared = 15;
  CmdRecord early = ahead(works());
  early.prepared = 3;
  const auto sut = findJoins(recordOf({{"A", {done(joins({0, 1, 2}, true), 6, 21), late}},
                                       {"B", {done(joins({0, 1, 2}, true), 7, 21), early}},
                                       {"C", {done(joins({0, 1, 2}), 20, 21), late}}}));
  EXPECT_EQ(sut.at(0).members[0].arrived, 15U);
  EXPECT_EQ(sut.at(0).members[1].arrived, 7U);
  EXPECT_EQ(sut.at(0).members[2].arrived, 20U);
}

TEST(FindJoins, WithoutItsNextCommandNobodyArrivesWhoAwaitsIt) {
  const auto sut = findJoins(
      recordOf({{"A", {since(6, joins({0, 1}, true))}}, {"B", {since(7, joins({0, 1}, true)), buffered(works())}}}));
  EXPECT_EQ(sut.at(0).members[0].arrived, 0U);
  EXPECT_EQ(sut.at(0).members[1].arrived, 0U);
  EXPECT_EQ(sut.at(0).last(), nullptr);
}

TEST(JoinOccurrenceLast, IsOfThoseThatArrivedTogetherTheLastInTurn) {
  const auto sut = findJoins(recordOf(
      {{"A", {since(6, joins({0, 1, 2}))}}, {"B", {since(6, joins({0, 1, 2}))}}, {"C", {since(4, joins({0, 1, 2}))}}}));
  ASSERT_NE(sut.at(0).last(), nullptr);
  EXPECT_EQ(sut.at(0).last()->object, 1U);
}

TEST(JoinMember, SplitsItsWaitAtItsArrival) {
  const JoinMember sut{.active = 10, .arrived = 14, .ended = 30};
  EXPECT_EQ(sut.forPreparation(100), 4U);
  EXPECT_EQ(sut.forMembers(100), 16U);
}

TEST(JoinMember, WaitsUntilTheRunsEndWhenItDidNotEnd) {
  EXPECT_EQ((JoinMember{.active = 10, .arrived = 14}.forPreparation(100)), 4U);
  EXPECT_EQ((JoinMember{.active = 10, .arrived = 14}.forMembers(100)), 86U);
  EXPECT_EQ((JoinMember{.active = 10}.forPreparation(100)), 90U);
  EXPECT_EQ((JoinMember{.active = 10}.forMembers(100)), 0U);
}

TEST(JoinMember, WaitsForPreparationUntilItIsAborted) {
  EXPECT_EQ((JoinMember{.active = 10, .ended = 30, .aborted = true}.forPreparation(100)), 20U);
}

TEST(JoinMember, DoesNotWaitBeforeItBegins) {
  EXPECT_EQ((JoinMember{.ended = 30, .aborted = true}.forPreparation(100)), 0U);
  EXPECT_EQ((JoinMember{.ended = 30, .aborted = true}.forMembers(100)), 0U);
}

TEST(JoinMember, NeverWaitsLessThanNothing) {
  EXPECT_EQ((JoinMember{.active = 10, .arrived = 14}.forMembers(12)), 0U);
  EXPECT_EQ((JoinMember{.active = 20}.forPreparation(12)), 0U);
}

}  // namespace
}  // namespace motion::host::observe
