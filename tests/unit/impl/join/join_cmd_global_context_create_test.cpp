// How the jobs of a group find one another: which occurrence a member's join belongs to.
#include <thread>

#include "impl/join/join_cmd_global_context.h"
#include "join_search_fixture.h"

namespace motion::kavo::job {
namespace {

using JoinCmdGlobalContextCreateTest = JoinSearchTest;

TEST_F(JoinCmdGlobalContextCreateTest, OpensAnOccurrenceForTheFirstMember) {
  const auto second = member(m_b, 21, m_abc);
  int index = 77;
  const auto sut = Context::create(second->m_job, index);
  ASSERT_NE(sut, nullptr);
  EXPECT_EQ(index, 1);
  EXPECT_EQ(sut->seq(), 1U);
  EXPECT_EQ(sut->groupMap().m_infos[1].cmdId, 21U);
  EXPECT_EQ(Context::listSize(), 1U);
  EXPECT_EQ(Context::findMostRecent(m_abc), sut);
  EXPECT_EQ(sut.use_count(), 1) << "nobody else owns it";
}

TEST_F(JoinCmdGlobalContextCreateTest, BringsTheMembersTogetherInWhateverOrder) {
  const auto third = prepared(m_c, 31, m_abc);
  const auto first = prepared(m_a, 11, m_abc);
  EXPECT_EQ(Context::listSize(), 1U);
  const auto second = prepared(m_b, 21, m_abc);
  EXPECT_EQ(contextOf(first), contextOf(third));
  EXPECT_EQ(contextOf(second), contextOf(third));
  EXPECT_TRUE(contextOf(first)->isAllObjLinked());
  EXPECT_EQ(Context::listSize(), 0U) << "a complete one cannot be found by later joins";
  EXPECT_EQ(Context::findMostRecent(m_abc), nullptr);
}

TEST_F(JoinCmdGlobalContextCreateTest, TakesGroupsInAnotherOrderForTheSame) {
  const auto first = prepared(m_a, 11, m_ab);
  const auto second = prepared(m_b, 21, {&m_b, &m_a});
  EXPECT_EQ(contextOf(first), contextOf(second));
  EXPECT_EQ(Context::listSize(), 0U);
}

TEST_F(JoinCmdGlobalContextCreateTest, KeepsGroupsApart) {
  const auto first = prepared(m_a, 11, m_ab);
  const auto third = prepared(m_c, 31, {&m_a, &m_c});
  EXPECT_NE(contextOf(first), contextOf(third));
  EXPECT_EQ(Context::listSize(), 2U);
  const auto second = prepared(m_b, 21, m_ab);
  EXPECT_EQ(contextOf(second), contextOf(first));
  const auto again = prepared(m_a, 12, {&m_a, &m_c});
  EXPECT_EQ(contextOf(again), contextOf(third));
  EXPECT_EQ(Context::listSize(), 0U);
}

TEST_F(JoinCmdGlobalContextCreateTest, CompletesAGroupOfOneAtOnce) {
  const auto sut = prepared(m_a, 11, {&m_a});
  EXPECT_TRUE(contextOf(sut)->isAllObjLinked());
  EXPECT_EQ(Context::listSize(), 0U);
  const auto next = prepared(m_a, 12, {&m_a});
  EXPECT_NE(contextOf(sut), contextOf(next));
  EXPECT_EQ(seqOf(next), 2U);
}

TEST_F(JoinCmdGlobalContextCreateTest, FillsQueuedOccurrencesInOrder) {
  const auto a1 = prepared(m_a, 11, m_ab);
  const auto a2 = prepared(m_a, 12, m_ab);
  const auto a3 = prepared(m_a, 13, m_ab);
  EXPECT_EQ(seqOf(a1), 1U);
  EXPECT_EQ(seqOf(a2), 2U);
  EXPECT_EQ(seqOf(a3), 3U);
  EXPECT_EQ(Context::listSize(), 3U);
  const auto b1 = prepared(m_b, 21, m_ab);
  EXPECT_EQ(contextOf(b1), contextOf(a1));
  EXPECT_EQ(Context::listSize(), 2U);
  const auto b2 = prepared(m_b, 22, m_ab);
  EXPECT_EQ(contextOf(b2), contextOf(a2));
  const auto b3 = prepared(m_b, 23, m_ab);
  EXPECT_EQ(contextOf(b3), contextOf(a3));
  EXPECT_EQ(Context::listSize(), 0U);
  const auto b4 = prepared(m_b, 24, m_ab);
  EXPECT_EQ(seqOf(b4), 4U);
}

TEST_F(JoinCmdGlobalContextCreateTest, FillsOccurrencesOfThreeInOrder) {
  const auto a1 = prepared(m_a, 11, m_abc);
  const auto other = prepared(m_c, 39, {&m_b, &m_c});
  const auto a2 = prepared(m_a, 12, m_abc);
  const auto c1 = prepared(m_c, 31, m_abc);
  const auto c2 = prepared(m_c, 32, m_abc);
  const auto c3 = prepared(m_c, 33, m_abc);
  const auto b1 = prepared(m_b, 21, m_abc);
  const auto b2 = prepared(m_b, 22, m_abc);
  const auto b3 = prepared(m_b, 23, m_abc);
  EXPECT_EQ(contextOf(c1), contextOf(a1));
  EXPECT_EQ(contextOf(b1), contextOf(a1));
  EXPECT_EQ(contextOf(c2), contextOf(a2));
  EXPECT_EQ(contextOf(b2), contextOf(a2));
  EXPECT_EQ(contextOf(b3), contextOf(c3));
  const auto a3 = prepared(m_a, 13, m_abc);
  EXPECT_EQ(contextOf(a3), contextOf(c3));
  EXPECT_EQ(Context::listSize(), 1U) << "that of the other group";
}

TEST_F(JoinCmdGlobalContextCreateTest, PassesOverOlderOnesInWhichTheMemberIsLinked) {
  const auto a1 = prepared(m_a, 11, m_abc);  // misses B and C
  const auto b1 = prepared(m_b, 21, m_abc);  // misses C
  const auto b2 = prepared(m_b, 22, m_abc);  // misses A and C
  const auto b3 = prepared(m_b, 23, m_abc);
  const auto a2 = prepared(m_a, 12, m_abc);
  EXPECT_EQ(contextOf(b1), contextOf(a1));
  EXPECT_EQ(contextOf(a2), contextOf(b2)) << "the oldest one in which it is not linked";
  EXPECT_NE(contextOf(b3), contextOf(b2));
}

TEST_F(JoinCmdGlobalContextCreateTest, GivesAStrangerNoPlace) {
  const auto stranger = member(m_c, 31, m_ab);
  int index = 77;
  const auto sut = Context::create(stranger->m_job, index);
  EXPECT_EQ(index, -1);
  EXPECT_EQ(Context::listSize(), 1U);
  const auto first = prepared(m_a, 11, m_ab);
  EXPECT_EQ(contextOf(first), sut.get()) << "it is open to the members";
}

TEST_F(JoinCmdGlobalContextCreateTest, GivesAStrangerNoPlaceInAnOpenOne) {
  const auto first = prepared(m_a, 11, m_ab);
  const auto stranger = member(m_c, 31, m_ab);
  int index = 77;
  EXPECT_EQ(Context::create(stranger->m_job, index).get(), contextOf(first));
  EXPECT_EQ(index, -1);
  EXPECT_EQ(contextOf(prepared(m_b, 21, m_ab)), contextOf(first)) << "it misses nobody else";
  EXPECT_EQ(Context::listSize(), 0U);
}

TEST_F(JoinCmdGlobalContextCreateTest, DoesNotLinkACommandThatIsGone) {
  const auto first = prepared(m_a, 11, m_ab);
  const auto second = member(m_b, 21, m_ab);
  second->m_cmdPtr.set(nullptr);
  int index = -1;
  EXPECT_EQ(Context::create(second->m_job, index).get(), contextOf(first));
  EXPECT_EQ(index, 1);
  EXPECT_EQ(Context::listSize(), 1U) << "still open";
}

TEST_F(JoinCmdGlobalContextCreateTest, OpensNothingForAJobWithoutInputs) {
  int index = 77;
  EXPECT_EQ(Context::create(JobObjJoin(), index), nullptr);
  EXPECT_EQ(index, -1);
  EXPECT_EQ(Context::listSize(), 0U);
}

TEST_F(JoinCmdGlobalContextCreateTest, PurgesAbortedOccurrencesOfAnyGroup) {
  const auto first = prepared(m_a, 11, m_ab);
  m_a.m_cmdStates[11] = CmdState::ABORTED;
  EXPECT_FALSE(contextOf(first)->isAborted()) << "nobody has looked yet";
  EXPECT_EQ(Context::listSize(), 1U);
  const auto third = prepared(m_c, 31, {&m_b, &m_c});
  EXPECT_TRUE(contextOf(first)->isAborted());
  EXPECT_TRUE(contextOf(first)->isAborted(0));
  EXPECT_EQ(Context::listSize(), 1U);
  EXPECT_EQ(Context::findMostRecent(m_ab), nullptr);
  const auto second = prepared(m_b, 21, m_ab);
  EXPECT_NE(contextOf(second), contextOf(first));
  EXPECT_EQ(seqOf(second), 3U);
}

TEST_F(JoinCmdGlobalContextCreateTest, PurgesWhatAJobHasAborted) {
  const auto first = prepared(m_a, 11, m_ab);
  first->m_job.onAbort();
  EXPECT_EQ(Context::listSize(), 1U) << "an abort leaves the list alone";
  const auto second = prepared(m_b, 21, m_ab);
  EXPECT_NE(contextOf(second), contextOf(first));
  EXPECT_EQ(Context::listSize(), 1U);
  const auto again = prepared(m_a, 12, m_ab);
  EXPECT_EQ(contextOf(again), contextOf(second));
}

TEST_F(JoinCmdGlobalContextCreateTest, DiesWithTheLastJob) {
  auto first = prepared(m_a, 11, m_abc);
  auto second = prepared(m_b, 21, m_abc);
  const std::weak_ptr<Context> watched = Context::findMostRecent(m_abc);
  first.reset();
  EXPECT_FALSE(watched.expired());
  second.reset();
  EXPECT_TRUE(watched.expired());
}

TEST_F(JoinCmdGlobalContextCreateTest, OpensANewOneWhenADeadOneHidesTheOlder) {
  const auto first = prepared(m_a, 11, m_ab);
  auto dead = prepared(m_c, 31, {&m_b, &m_c});
  dead.reset();
  const auto second = prepared(m_b, 21, m_ab);
  EXPECT_NE(contextOf(second), contextOf(first));
  EXPECT_EQ(seqOf(second), 3U);
  const auto again = prepared(m_a, 12, m_ab);
  EXPECT_EQ(contextOf(again), contextOf(second));
}

TEST_F(JoinCmdGlobalContextCreateTest, NeverOpensTwoForOneJoinWhenMembersPrepareAtOnce) {
  constexpr std::uint64_t JOINS = 200;
  std::vector<std::unique_ptr<JoinMember>> ofA;
  std::vector<std::unique_ptr<JoinMember>> ofB;
  for (std::uint64_t join = 0; join < JOINS; ++join) {
    ofA.push_back(member(m_a, 1000 + join, m_ab));
    ofB.push_back(member(m_b, 2000 + join, m_ab));
  }
  const auto prepareAll = [](const std::vector<std::unique_ptr<JoinMember>>& members) {
    for (const auto& one : members) {
      EXPECT_EQ(one->m_job.registerForJoin(), core::job::JobResult::NoEffect);
    }
  };
  std::thread other([&] { prepareAll(ofB); });
  prepareAll(ofA);
  other.join();
  for (std::uint64_t join = 0; join < JOINS; ++join) {
    EXPECT_EQ(contextOf(ofA[join]), contextOf(ofB[join])) << join;
    EXPECT_EQ(seqOf(ofA[join]), join + 1);
  }
  EXPECT_EQ(Context::listSize(), 0U);
}

}  // namespace
}  // namespace motion::kavo::job
