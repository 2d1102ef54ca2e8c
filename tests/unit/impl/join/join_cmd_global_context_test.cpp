// One occurrence of a join: its members, who has linked, joined and aborted, and the list of open occurrences.
#include "impl/join/join_cmd_global_context.h"

#include <cstddef>
#include <limits>
#include <type_traits>

#include "join_fixture.h"

namespace motion::kavo::job {
namespace {

using core::cmd::CmdState;
using testing::ElementsAre;
using Context = JoinCmdGlobalContext;

constexpr int NO_INDEX = -1;

class JoinCmdGlobalContextTest : public JoinTest {
 protected:
  /// A context that stands in the list as the newest.
  [[nodiscard]] static std::shared_ptr<Context> listed(const JoinGroup& group) {
    auto made = std::make_shared<Context>(group);
    Context::appendToLinkedList(made);
    return made;
  }
  [[nodiscard]] static std::vector<bool> joined(const Context& context, int count) {
    std::vector<bool> result;
    for (int index = 0; index < count; ++index) {
      result.push_back(context.isJoined(index));
    }
    return result;
  }
  [[nodiscard]] static std::vector<bool> aborted(const Context& context, int count) {
    std::vector<bool> result;
    for (int index = 0; index < count; ++index) {
      result.push_back(context.isAborted(index));
    }
    return result;
  }

  const JoinGroup m_ac{&m_a, &m_c};
};

TEST_F(JoinCmdGlobalContextTest, HasVirtualDestructorsAndFieldsInOrder) {
  static_assert(std::has_virtual_destructor_v<Context> && std::has_virtual_destructor_v<GroupMap>);
  EXPECT_EQ(offsetof(ObjJoinInfo, motionObj), 0U);
  EXPECT_EQ(offsetof(ObjJoinInfo, cmdId), 8U);
  EXPECT_EQ(offsetof(ObjJoinInfo, joinSeq), 16U);
  EXPECT_EQ(offsetof(ObjJoinInfo, aborted), 20U);
}

TEST_F(JoinCmdGlobalContextTest, HoldsTheMembersInGroupOrderAtFirst) {
  const Context sut({&m_c, &m_a, &m_b, &m_a});
  ASSERT_EQ(sut.groupMap().m_infos.size(), 4U);
  const std::vector<const core::IObj*> expected = {&m_c, &m_a, &m_b, &m_a};
  for (std::size_t index = 0; index < expected.size(); ++index) {
    const auto& info = sut.groupMap().m_infos[index];
    EXPECT_EQ(info.motionObj, expected[index]);
    EXPECT_EQ(info.cmdId, 0U);
    EXPECT_EQ(info.joinSeq, 0U);
    EXPECT_FALSE(info.aborted);
  }
  EXPECT_EQ(sut.joinedCount(), 0U);
  EXPECT_EQ(sut.completionCycle(), 0U);
  EXPECT_FALSE(sut.isAborted());
  EXPECT_FALSE(sut.isAllObjLinked());
  EXPECT_EQ(Context::listSize(), 0U) << "making one does not open it";
}

TEST_F(JoinCmdGlobalContextTest, IsNumberedFromOne) {
  EXPECT_EQ(Context(m_ab).seq(), 1U);
  EXPECT_EQ(Context(m_ab).seq(), 2U);
  EXPECT_EQ(Context(m_ac).seq(), 3U);
  Context::reset();
  EXPECT_EQ(Context(m_ab).seq(), 1U);
}

TEST_F(JoinCmdGlobalContextTest, LinksMembersByTheirObjects) {
  Context sut(m_abc);
  const auto second = member(m_b, 21, m_abc);
  const auto third = member(m_c, 31, m_abc);
  const auto first = member(m_a, 11, m_abc);
  EXPECT_EQ(sut.linkJobObject(second->m_job), 1);
  EXPECT_EQ(sut.groupMap().m_infos[1].cmdId, 21U);
  EXPECT_EQ(sut.linkJobObject(third->m_job), 2);
  EXPECT_FALSE(sut.isAllObjLinked());
  EXPECT_EQ(sut.linkJobObject(first->m_job), 0);
  EXPECT_TRUE(sut.isAllObjLinked());
}

TEST_F(JoinCmdGlobalContextTest, DoesNotLinkAStranger) {
  Context sut(m_ab);
  const auto third = member(m_c, 31, m_abc);
  EXPECT_EQ(sut.linkJobObject(third->m_job), NO_INDEX);
  EXPECT_EQ(sut.groupMap().m_infos[0].cmdId, 0U);
  EXPECT_EQ(sut.groupMap().m_infos[1].cmdId, 0U);
}

TEST_F(JoinCmdGlobalContextTest, LinksTheFirstEntryOfAnObjectThatIsNamedTwice) {
  const JoinGroup group{&m_b, &m_a, &m_a};
  Context sut(group);
  const auto first = member(m_a, 11, group);
  const auto second = member(m_b, 21, group);
  EXPECT_EQ(sut.linkJobObject(second->m_job), 0);
  EXPECT_EQ(sut.linkJobObject(first->m_job), 1);
  EXPECT_EQ(sut.linkJobObject(first->m_job), 1);
  EXPECT_FALSE(sut.isAllObjLinked());
}

TEST_F(JoinCmdGlobalContextTest, IsLinkedCompletelyWithoutMembers) {
  EXPECT_TRUE(Context(JoinGroup{}).isAllObjLinked());
}

TEST_F(JoinCmdGlobalContextTest, RanksTheMembersAsTheyJoin) {
  Context sut(m_abc);
  sut.join(2);
  EXPECT_THAT(joined(sut, 3), ElementsAre(false, false, true));
  EXPECT_EQ(sut.joinedCount(), 1U);
  sut.join(0);
  sut.join(1);
  EXPECT_THAT(joined(sut, 3), ElementsAre(true, true, true));
  EXPECT_EQ(sut.joinedCount(), 3U);
  EXPECT_EQ(sut.groupMap().m_infos[0].joinSeq, 2U);
  EXPECT_EQ(sut.groupMap().m_infos[1].joinSeq, 3U);
  EXPECT_EQ(sut.groupMap().m_infos[2].joinSeq, 1U);
}

TEST_F(JoinCmdGlobalContextTest, NotesTheCycleOfTheObjectThatJoinsLast) {
  Context sut(m_ab);
  m_a.m_cycleCount = 1000;
  m_b.m_cycleCount = 0x1'0000'0007;
  sut.join(0);
  EXPECT_EQ(sut.completionCycle(), 0U);
  sut.join(1);
  EXPECT_EQ(sut.completionCycle(), 0x1'0000'0007U);
}

TEST_F(JoinCmdGlobalContextTest, JoinsAMemberOnlyOnce) {
  Context sut(m_ab);
  m_a.m_cycleCount = 5;
  m_b.m_cycleCount = 5;
  sut.join(0);
  sut.join(0);
  EXPECT_EQ(sut.joinedCount(), 1U);
  sut.join(1);
  m_b.m_cycleCount = 6;
  sut.join(1);
  EXPECT_EQ(sut.joinedCount(), 2U);
  EXPECT_EQ(sut.groupMap().m_infos[1].joinSeq, 2U);
  EXPECT_EQ(sut.completionCycle(), 5U);
}

TEST_F(JoinCmdGlobalContextTest, KnowsNothingOfWhoIsNoMember) {
  Context sut(m_ab);
  for (const int index : {NO_INDEX, 2, std::numeric_limits<int>::max(), std::numeric_limits<int>::min()}) {
    sut.join(index);
    EXPECT_FALSE(sut.isJoined(index));
    EXPECT_FALSE(sut.isAborted(index));
    sut.markAborted(index);
    EXPECT_FALSE(sut.isAborted(index));
  }
  EXPECT_EQ(sut.joinedCount(), 0U);
  EXPECT_EQ(sut.completionCycle(), 0U);
  EXPECT_THAT(joined(sut, 2), ElementsAre(false, false));
  EXPECT_THAT(aborted(sut, 2), ElementsAre(false, false));
}

TEST_F(JoinCmdGlobalContextTest, IsAbortedWithAMember) {
  Context sut(m_abc);
  sut.markAborted(1);
  EXPECT_TRUE(sut.isAborted());
  EXPECT_THAT(aborted(sut, 3), ElementsAre(false, true, false));
  EXPECT_THAT(joined(sut, 3), ElementsAre(false, false, false));
}

TEST_F(JoinCmdGlobalContextTest, FindsTheFirstAbortedMemberOnly) {
  Context sut(m_abc);
  const auto second = member(m_b, 21, m_abc);
  const auto third = member(m_c, 31, m_abc);
  ASSERT_EQ(sut.linkJobObject(third->m_job), 2);
  ASSERT_EQ(sut.linkJobObject(second->m_job), 1);
  m_c.m_cmdStates[31] = CmdState::ABORTED;
  m_b.m_cmdStates[21] = CmdState::ABORTED;
  sut.determineAbortedFromCmdStates();
  EXPECT_TRUE(sut.isAborted());
  EXPECT_THAT(aborted(sut, 3), ElementsAre(false, true, false));
  m_b.m_cmdStates.clear();
  sut.determineAbortedFromCmdStates();
  EXPECT_THAT(aborted(sut, 3), ElementsAre(false, true, false)) << "an aborted one is not looked at again";
}

TEST_F(JoinCmdGlobalContextTest, IsNotAbortedThroughOtherStatesOrOtherCommands) {
  Context sut(m_ab);
  const auto first = member(m_a, 11, m_ab);
  ASSERT_EQ(sut.linkJobObject(first->m_job), 0);
  for (const auto state :
       {CmdState::CREATED, CmdState::BUFFERED, CmdState::PREPARED, CmdState::ACTIVE, CmdState::DONE, CmdState::FAILED}) {
    m_a.m_cmdStates = {{11, state}, {12, CmdState::ABORTED}};
    m_b.m_cmdStates = {{0, CmdState::ABORTED}, {11, CmdState::ABORTED}};  // this member has not linked
    sut.determineAbortedFromCmdStates();
    EXPECT_FALSE(sut.isAborted());
  }
}

TEST_F(JoinCmdGlobalContextTest, ComparesGroupsWithoutRegardToOrder) {
  const Context sut(m_ab);
  EXPECT_TRUE(sut.isSameGroup(JoinGroup{&m_b, &m_a}));
  EXPECT_TRUE(sut.isSameGroup(m_ab));
  EXPECT_FALSE(sut.isSameGroup(m_ac));
  EXPECT_FALSE(sut.isSameGroup(m_abc));
  EXPECT_FALSE(sut.isSameGroup(JoinGroup{&m_a}));
  EXPECT_FALSE(sut.isSameGroup(JoinGroup{}));
  EXPECT_TRUE(sut.isSameGroup(Context({&m_b, &m_a})));
  EXPECT_FALSE(sut.isSameGroup(Context(m_ac)));
  EXPECT_FALSE(sut.isSameGroup(Context(m_abc)));
  EXPECT_TRUE(Context(JoinGroup{}).isSameGroup(JoinGroup{}));
}

TEST_F(JoinCmdGlobalContextTest, AsksOnlyForTheMembersOfTheOtherGroup) {
  const Context sut(m_abc);
  const JoinGroup twice{&m_a, &m_a, &m_b};
  EXPECT_TRUE(sut.isSameGroup(twice)) << "as many members, and all of them known here";
  EXPECT_TRUE(sut.isSameGroup(Context(twice)));
  EXPECT_FALSE(Context(twice).isSameGroup(m_abc));
  EXPECT_FALSE(Context(twice).isSameGroup(sut));
}

TEST_F(JoinCmdGlobalContextTest, NeedsJobsWithDataAndAnObject) {
  EXPECT_FALSE(Context::isValidJobObject(JobObjJoin()));
  const auto complete = member(m_a, 11, m_ab);
  EXPECT_TRUE(Context::isValidJobObject(complete->m_job));
  complete->m_objPtr.set(nullptr);
  EXPECT_FALSE(Context::isValidJobObject(complete->m_job));
  JoinMember withoutData(m_host, m_a, 11, m_ab);
  withoutData.m_handler.m_published.erase({JoinJobPars::getMyID(), cmdDataSection()});
  ASSERT_TRUE(core::isFailure(withoutData.m_job.registerInputs(&withoutData.m_handler)));
  EXPECT_FALSE(Context::isValidJobObject(withoutData.m_job));
}

TEST_F(JoinCmdGlobalContextTest, IsFoundNewestFirst) {
  EXPECT_EQ(Context::findMostRecent(m_ab), nullptr);
  const auto first = listed(m_ab);
  const auto second = listed(m_ac);
  const auto third = listed({&m_b, &m_a});
  EXPECT_EQ(Context::listSize(), 3U);
  EXPECT_EQ(Context::findMostRecent(m_ab), third);
  EXPECT_EQ(Context::findMostRecent(m_ac), second);
  EXPECT_EQ(Context::findMostRecent(m_abc), nullptr);
  EXPECT_EQ(third->findPreviousWithSameGroup(), first);
  EXPECT_EQ(second->findPreviousWithSameGroup(), nullptr);
  EXPECT_EQ(first->findPreviousWithSameGroup(), nullptr);
}

TEST_F(JoinCmdGlobalContextTest, LeavesTheListFromAnyPlace) {
  const auto first = listed(m_ab);
  const auto second = listed(m_ab);
  const auto third = listed(m_ab);
  second->removeFromLinkedList();
  EXPECT_EQ(Context::listSize(), 2U);
  EXPECT_EQ(third->findPreviousWithSameGroup(), first);
  EXPECT_EQ(second->findPreviousWithSameGroup(), nullptr) << "it knows nobody any more";
  third->removeFromLinkedList();
  EXPECT_EQ(Context::findMostRecent(m_ab), first);
  EXPECT_EQ(third->findPreviousWithSameGroup(), nullptr);
  first->removeFromLinkedList();
  EXPECT_EQ(Context::findMostRecent(m_ab), nullptr);
  EXPECT_EQ(Context::listSize(), 0U);
}

TEST_F(JoinCmdGlobalContextTest, LeavesTheListOnlyOnce) {
  const auto first = listed(m_ab);
  const auto second = listed(m_ab);
  second->removeFromLinkedList();
  second->removeFromLinkedList();
  std::make_shared<Context>(m_ab)->removeFromLinkedList();
  EXPECT_EQ(Context::listSize(), 1U);
  EXPECT_EQ(Context::findMostRecent(m_ab), first);
}

TEST_F(JoinCmdGlobalContextTest, IsNotOwnedByTheList) {
  auto first = listed(m_ab);
  const auto second = listed(m_ab);
  EXPECT_EQ(first.use_count(), 1);
  const std::weak_ptr<Context> watched = first;
  first.reset();
  EXPECT_TRUE(watched.expired());
  EXPECT_EQ(second.use_count(), 1);
}

TEST_F(JoinCmdGlobalContextTest, HidesWhatStandsBehindADeadHead) {
  const auto first = listed(m_ab);
  auto second = listed(m_ac);
  second.reset();
  EXPECT_EQ(Context::findMostRecent(m_ab), nullptr);
  EXPECT_EQ(Context::listSize(), 2U) << "a death changes nothing";
  first->removeFromLinkedList();
  EXPECT_EQ(Context::listSize(), 2U) << "it is not found";
  const auto third = listed(m_ab);
  EXPECT_EQ(Context::listSize(), 3U);
  EXPECT_EQ(Context::findMostRecent(m_ab), third);
  EXPECT_EQ(third->findPreviousWithSameGroup(), nullptr);
}

TEST_F(JoinCmdGlobalContextTest, HidesWhatStandsBehindADeadLink) {
  const auto first = listed(m_ab);
  auto second = listed(m_ac);
  const auto third = listed(m_ab);
  second.reset();
  EXPECT_EQ(Context::findMostRecent(m_ab), third);
  EXPECT_EQ(third->findPreviousWithSameGroup(), nullptr);
  first->markAborted(0);
  Context::removeAbortedContexts();
  EXPECT_EQ(Context::listSize(), 3U) << "neither skipped nor repaired";
  third->removeFromLinkedList();
  EXPECT_EQ(Context::listSize(), 2U);
  EXPECT_EQ(Context::findMostRecent(m_ab), nullptr);
}

TEST_F(JoinCmdGlobalContextTest, LeavesTheListWhenItIsAborted) {
  const auto marked = listed(m_ab);
  const auto open = listed(m_ac);
  const auto found = listed(m_ab);
  const auto last = listed(m_abc);
  const auto first = member(m_a, 11, m_ab);
  ASSERT_EQ(found->linkJobObject(first->m_job), 0);
  m_a.m_cmdStates[11] = CmdState::ABORTED;
  marked->markAborted(1);
  last->markAborted(2);
  Context::removeAbortedContexts();
  EXPECT_EQ(Context::listSize(), 1U);
  EXPECT_TRUE(found->isAborted());
  EXPECT_EQ(Context::findMostRecent(m_ac), open);
  EXPECT_EQ(Context::findMostRecent(m_ab), nullptr);
  EXPECT_EQ(Context::findMostRecent(m_abc), nullptr);
}

TEST_F(JoinCmdGlobalContextTest, LeavesTheListOnReset) {
  const auto first = listed(m_ab);
  const auto second = listed(m_ab);
  Context::reset();
  EXPECT_EQ(Context::listSize(), 0U);
  EXPECT_EQ(Context::findMostRecent(m_ab), nullptr);
  const auto third = listed(m_ab);
  EXPECT_EQ(third->seq(), 1U);
  EXPECT_EQ(Context::listSize(), 1U);
  EXPECT_EQ(third->findPreviousWithSameGroup(), nullptr);
}

}  // namespace
}  // namespace motion::kavo::job
