// What the search for an occurrence does to the list of those that are open, also when something happens meanwhile.
#include "impl/join/join_cmd_global_context.h"
#include "join_search_fixture.h"

namespace motion::kavo::job {
namespace {

using JoinCmdGlobalContextSearchTest = JoinSearchTest;

TEST_F(JoinCmdGlobalContextSearchTest, TakesACompleteOneOutFromAnyPlace) {
  const auto oldest = prepared(m_a, 11, m_ab);
  const auto middle = prepared(m_a, 12, m_ac);
  const auto newest = prepared(m_b, 21, m_bc);
  const auto ofMiddle = prepared(m_c, 31, m_ac);
  EXPECT_EQ(contextOf(ofMiddle), contextOf(middle));
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(newest), contextOf(oldest)}));
  const auto above = prepared(m_a, 13, m_ac);
  const auto ofOldest = prepared(m_b, 22, m_ab);
  EXPECT_EQ(contextOf(ofOldest), contextOf(oldest));
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(above), contextOf(newest)}));
  const auto ofAbove = prepared(m_c, 32, m_ac);
  EXPECT_EQ(contextOf(ofAbove), contextOf(above));
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(newest)}));
  EXPECT_EQ(Context::listSize(), 1U);
}

TEST_F(JoinCmdGlobalContextSearchTest, TakesTheOldestOutFromBetweenItsLikes) {
  const auto other = prepared(m_c, 31, m_bc);
  const auto a1 = prepared(m_a, 11, m_ab);
  const auto a2 = prepared(m_a, 12, m_ab);
  const auto a3 = prepared(m_a, 13, m_ab);
  const auto a4 = prepared(m_a, 14, m_ab);
  const auto b1 = prepared(m_b, 21, m_ab);
  EXPECT_EQ(contextOf(b1), contextOf(a1));
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(a4), contextOf(a3), contextOf(a2), contextOf(other)}));
  const auto b2 = prepared(m_b, 22, m_ab);
  const auto b3 = prepared(m_b, 23, m_ab);
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(a4), contextOf(other)}));
  EXPECT_EQ(Context::listSize(), 2U);
}

TEST_F(JoinCmdGlobalContextSearchTest, PurgesAllAroundTheOneThatItCompletes) {
  std::vector<std::unique_ptr<JoinMember>> members;
  for (const std::uint64_t cmdID : {31, 32, 33, 34, 35, 36}) {
    if (cmdID == 33) {
      members.push_back(prepared(m_a, 11, m_ab));
    }
    members.push_back(prepared(m_c, cmdID, cmdID == 35 ? m_bc : JoinGroup{&m_a, &m_b, &m_c}));
  }
  // Newest first: two aborted ones, two open ones behind them, and the pair that is the oldest is aborted again.
  for (const std::uint64_t cmdID : {31, 32, 34, 36}) {
    m_c.m_cmdStates[cmdID] = CmdState::ABORTED;
  }
  EXPECT_EQ(Context::listSize(), 7U);
  const auto second = prepared(m_b, 21, m_ab);
  EXPECT_EQ(contextOf(second), contextOf(members[2]));
  EXPECT_TRUE(contextOf(second)->isAllObjLinked());
  EXPECT_EQ(Context::listSize(), 2U);
  EXPECT_EQ(openOf({m_abc, m_bc}), (std::vector{contextOf(members[5]), contextOf(members[3])}));
}

TEST_F(JoinCmdGlobalContextSearchTest, AsksForEachLinkedMemberOnceNewestFirst) {
  const JoinGroup ofTwo{&m_a, &m_acting};
  const JoinGroup ofThree{&m_acting, &m_b, &m_stranger};
  ActingObj third(m_host.calls, m_asked);
  const JoinGroup ofThird{&m_acting, &third, &m_a};
  const auto n1 = preparedUnnamed(m_acting, 101, ofTwo);
  const auto n2 = preparedUnnamed(third, 201, ofThird);
  const auto n3 = preparedUnnamed(m_acting, 102, ofThird);
  const auto n4 = preparedUnnamed(m_acting, 103, ofThree);
  ASSERT_EQ(contextOf(n2), contextOf(n3));
  m_asked.clear();
  const auto sut = preparedUnnamed(m_a, 11, ofTwo);
  EXPECT_EQ(contextOf(sut), contextOf(n1));
  EXPECT_EQ(m_asked, (std::vector<std::uint64_t>{103, 102, 201, 101}));
  m_acting.m_cmdStates[102] = CmdState::ABORTED;
  m_asked.clear();
  const auto next = preparedUnnamed(m_a, 12, ofTwo);
  EXPECT_EQ(m_asked, (std::vector<std::uint64_t>{103, 102})) << "the first aborted one is enough";
}

TEST_F(JoinCmdGlobalContextSearchTest, DropsTheNewestWhenItIsAbortedDuringTheSearch) {
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  const auto a1 = prepared(m_a, 11, m_ab);
  const auto a2 = prepared(m_a, 12, m_ab);
  const auto other = prepared(m_c, 31, m_ac);
  m_acting.m_meanwhile = [&] { a2->m_job.onAbort(); };
  const auto sut = prepared(m_b, 21, m_ab);
  EXPECT_EQ(seqOf(sut), 5U) << "older ones are not looked at";
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(sut), contextOf(other), contextOf(a1), contextOf(acting)}));
  EXPECT_EQ(Context::listSize(), 4U);
}

TEST_F(JoinCmdGlobalContextSearchTest, DropsTheNewestThoughTheMemberIsLinkedThere) {
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  const auto a1 = prepared(m_a, 11, m_ab);
  m_acting.m_meanwhile = [&] { a1->m_job.onAbort(); };
  const auto sut = prepared(m_a, 12, m_ab);
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(sut), contextOf(acting)}));
  EXPECT_EQ(Context::listSize(), 2U);
}

TEST_F(JoinCmdGlobalContextSearchTest, TakesAnOlderOneThatIsAbortedDuringTheSearch) {
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  const auto a1 = prepared(m_a, 11, m_ab);
  const auto a2 = prepared(m_a, 12, m_ab);
  m_acting.m_meanwhile = [&] { a1->m_job.onAbort(); };
  const auto sut = prepared(m_b, 21, m_ab);
  EXPECT_EQ(contextOf(sut), contextOf(a1)) << "as if it had been aborted afterwards";
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(a2), contextOf(acting)}));
}

TEST_F(JoinCmdGlobalContextSearchTest, CompletesOneWhoseNeighbourDiesDuringTheSearch) {
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  const auto a1 = prepared(m_a, 11, m_ab);
  auto neighbour = prepared(m_c, 31, m_bc);
  const std::weak_ptr<Context> watched = Context::findMostRecent(m_bc);
  m_acting.m_meanwhile = [&] {
    neighbour.reset();
    EXPECT_FALSE(watched.expired()) << "the search still needs its link";
  };
  const auto sut = prepared(m_b, 21, m_ab);
  EXPECT_EQ(neighbour, nullptr);
  EXPECT_EQ(contextOf(sut), contextOf(a1));
  EXPECT_TRUE(watched.expired()) << "nobody owns it after the search";
  EXPECT_EQ(Context::listSize(), 2U) << "the complete one is gone, the dead one stays";
  EXPECT_EQ(openOf(m_all), std::vector<const Context*>());
}

TEST_F(JoinCmdGlobalContextSearchTest, CompletesOneWhoseLikeDiesDuringTheSearch) {
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  const auto a1 = prepared(m_a, 11, m_ab);
  auto a2 = prepared(m_a, 12, m_ab);
  const std::weak_ptr<Context> watched = Context::findMostRecent(m_ab);
  const auto a3 = prepared(m_a, 13, m_ab);
  m_acting.m_meanwhile = [&] {
    a2.reset();
    EXPECT_FALSE(watched.expired()) << "the search still needs its link";
  };
  const auto sut = prepared(m_b, 21, m_ab);
  EXPECT_EQ(a2, nullptr);
  EXPECT_EQ(contextOf(sut), contextOf(a1));
  EXPECT_TRUE(watched.expired()) << "nobody owns it after the search";
  EXPECT_EQ(Context::listSize(), 3U) << "the complete one is gone, the dead one stays";
  EXPECT_EQ(openOf(m_all), std::vector{contextOf(a3)});
}

TEST_F(JoinCmdGlobalContextSearchTest, CompletesTheOneBehindTheNewestWhichDiesDuringTheSearch) {
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  const auto a1 = prepared(m_a, 11, m_ab);
  auto newest = prepared(m_a, 12, m_ab);
  const std::weak_ptr<Context> watched = Context::findMostRecent(m_ab);
  m_acting.m_meanwhile = [&] {
    newest.reset();
    EXPECT_FALSE(watched.expired()) << "the search still needs its link";
  };
  const auto sut = prepared(m_b, 21, m_ab);
  EXPECT_EQ(contextOf(sut), contextOf(a1));
  EXPECT_TRUE(watched.expired()) << "nobody owns it after the search";
  EXPECT_EQ(Context::listSize(), 2U) << "the complete one is gone, the dead one stays";
}

TEST_F(JoinCmdGlobalContextSearchTest, TakesOneThatIsLeftWhileTheOneBeforeIsLookedAt) {
  auto a1 = prepared(m_a, 11, m_ab);
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  m_acting.m_meanwhile = [&] { a1.reset(); };
  const auto sut = prepared(m_b, 21, m_ab);
  EXPECT_EQ(a1, nullptr);
  EXPECT_EQ(seqOf(sut), 1U) << "as if it had been left afterwards";
  EXPECT_TRUE(contextOf(sut)->isAllObjLinked());
  EXPECT_EQ(openOf(m_all), std::vector{contextOf(acting)});
  EXPECT_EQ(Context::listSize(), 1U);
}

TEST_F(JoinCmdGlobalContextSearchTest, StopsWhenAnObjectDoesNotAnswer) {
  const auto behind = prepared(m_a, 11, m_ab);
  const auto acting = preparedUnnamed(m_acting, 101, m_withActing);
  const auto aborted = prepared(m_c, 31, m_bc);
  m_c.m_cmdStates[31] = CmdState::ABORTED;
  m_acting.m_throws = true;
  const auto sut = member(m_b, 21, m_ab);
  EXPECT_EQ(sut->m_job.registerForJoin(), core::job::JobResult::OutOfMemory);
  EXPECT_EQ(sut->m_job.getContext(), nullptr);
  EXPECT_FALSE(contextOf(behind)->isAllObjLinked());
  EXPECT_EQ(openOf(m_all), (std::vector{contextOf(acting), contextOf(behind)})) << "what was aborted had gone before";
  m_acting.m_throws = false;
  EXPECT_EQ(sut->m_job.registerForJoin(), core::job::JobResult::NoEffect);
  EXPECT_EQ(contextOf(sut), contextOf(behind));
}

}  // namespace
}  // namespace motion::kavo::job
