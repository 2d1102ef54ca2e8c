// The job of Join at work: members wait for one another and leave in the same cycle.
#include <utility>

#include "impl/join/job_obj_join.h"
#include "join_fixture.h"

namespace motion::kavo::job {
namespace {

using core::job::JobResult;
using testing::ElementsAre;
using testing::IsEmpty;

constexpr auto WAIT = JobResult::NoEffect;
constexpr auto DONE = JobResult::CmdFinished;

class JobObjJoinRunTest : public JoinTest {
 protected:
  using Members = std::vector<JoinMember*>;

  /// One cycle of the host: all objects count it, and the jobs of these members are called one after the other.
  [[nodiscard]] std::vector<JobResult> cycle(const Members& members) {
    for (auto* const obj : {&m_a, &m_b, &m_c}) {
      ++obj->m_cycleCount;
    }
    std::vector<JobResult> results;
    for (auto* const member : members) {
      results.push_back(member->m_job.joinAndWait());
    }
    return results;
  }
  [[nodiscard]] static std::string info(const std::string& function, const std::string& text) {
    return "Info job_obj_join " + function + ": " + text;
  }
  static void setNext(test::FakeObj& obj, std::uint64_t current, std::uint64_t latestPrepared) {
    obj.m_currentCmdID = current;
    obj.m_latestPreparedCmdID = latestPrepared;
  }
};

TEST_F(JobObjJoinRunTest, TellsWhenItIsPrepared) {
  const auto first = prepared(m_a, 11, m_abc, true);
  const auto second = prepared(m_b, 21, m_abc);
  const auto next = prepared(m_a, 12, m_abc);
  const std::string text = "group=[A,B,C], syncStartnextCmd=";
  EXPECT_THAT(traces(), ElementsAre(info("registerForJoin", "A: joinCmd seq=1: " + text + "true, command PREPARED"),
                                    info("registerForJoin", "B: joinCmd seq=1: " + text + "false, command PREPARED"),
                                    info("registerForJoin", "A: joinCmd seq=2: " + text + "false, command PREPARED")));
  EXPECT_EQ(firstFormat(), "%s: joinCmd seq=%u: group=[%s], syncStartnextCmd=%s, command PREPARED");
}

TEST_F(JobObjJoinRunTest, FinishesAllOneCycleAfterTheLastHasJoined) {
  m_a.m_cycleCount = m_b.m_cycleCount = m_c.m_cycleCount = 100;
  const auto a = prepared(m_a, 11, m_abc);
  const auto b = prepared(m_b, 21, m_abc);
  const auto c = prepared(m_c, 31, m_abc);
  forget();
  EXPECT_THAT(cycle({b.get()}), ElementsAre(WAIT));
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(traces(), ElementsAre(info("joinAndWait", "B: joinCmd seq=1: B has joined"),
                                    info("joinAndWait", "A: joinCmd seq=1: A has joined")));
  EXPECT_THAT(formats(), ElementsAre("%s: joinCmd seq=%u: %s has joined", "%s: joinCmd seq=%u: %s has joined"));
  forget();
  EXPECT_THAT(cycle({a.get(), b.get(), c.get()}), ElementsAre(WAIT, WAIT, WAIT));
  EXPECT_EQ(a->m_job.getContext()->completionCycle(), 104U);
  EXPECT_THAT(traces(), ElementsAre(info("joinAndWait", "C: joinCmd seq=1: C has joined")));
  forget();
  EXPECT_THAT(cycle({a.get(), b.get(), c.get()}), ElementsAre(DONE, DONE, DONE));
  EXPECT_THAT(traces(), ElementsAre(info("joinAndWait", "A: joinCmd seq=1: join complete"),
                                    info("joinAndWait", "B: joinCmd seq=1: join complete"),
                                    info("joinAndWait", "C: joinCmd seq=1: join complete")));
  EXPECT_EQ(firstFormat(), "%s: joinCmd seq=%u: join complete");
}

TEST_F(JobObjJoinRunTest, FinishesAllTogetherWhoeverJoinsLast) {
  for (const bool isFirstLate : {true, false}) {
    const auto a = prepared(m_a, 11, m_ab);
    const auto b = prepared(m_b, 21, m_ab);
    EXPECT_THAT(cycle({isFirstLate ? b.get() : a.get()}), ElementsAre(WAIT));
    EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
    EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(DONE, DONE));
  }
}

TEST_F(JobObjJoinRunTest, NeverFinishesWhoMissesThatVeryCycle) {
  const auto a = prepared(m_a, 11, m_ab);
  const auto b = prepared(m_b, 21, m_ab);
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({b.get()}), ElementsAre(DONE));
  forget();
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_THAT(traces(), IsEmpty());
}

TEST_F(JobObjJoinRunTest, FinishesAGroupOfOneAfterOneCycle) {
  const auto a = prepared(m_a, 11, {&m_a});
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_THAT(cycle({a.get()}), ElementsAre(DONE));
}

TEST_F(JobObjJoinRunTest, WaitsForMembersThatAreNotPrepared) {
  const auto a = prepared(m_a, 11, m_ab);
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  const auto b = prepared(m_b, 21, m_ab);
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT)) << "prepared is not joined";
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(DONE, DONE));
}

TEST_F(JobObjJoinRunTest, DoesNothingBeforeExecutionWithoutTheFlag) {
  const auto a = prepared(m_a, 11, m_ab);
  setNext(m_a, 11, 11);
  forget();
  EXPECT_EQ(a->m_job.joinPreExecute(), WAIT);
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_TRUE(a->m_job.getContext()->isJoined(0)) << "it joins in its first cycle";
}

TEST_F(JobObjJoinRunTest, JoinsOnlyWhenItsNextCommandIsPrepared) {
  const auto a = prepared(m_a, 11, m_ab, true);
  setNext(m_a, 11, 11);
  forget();
  EXPECT_EQ(a->m_job.joinPreExecute(), WAIT);
  EXPECT_THAT(traces(), ElementsAre(info("joinPreExecute", "A: joinCmd seq=1: wait for next prepared command")));
  EXPECT_THAT(formats(), ElementsAre("%s: joinCmd seq=%u: %s"));
  forget();
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_FALSE(a->m_job.getContext()->isJoined(0));
  EXPECT_THAT(traces(), IsEmpty());
  setNext(m_a, 11, 12);
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_TRUE(a->m_job.getContext()->isJoined(0));
  EXPECT_THAT(traces(), ElementsAre(info("joinAndWait", "A: joinCmd seq=1: finished waiting for next prepared command"),
                                    info("joinAndWait", "A: joinCmd seq=1: A has joined")));
  EXPECT_EQ(firstFormat(), "%s: joinCmd seq=%u: finished waiting for next prepared command");
  forget();
  setNext(m_a, 11, 11);
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_THAT(traces(), IsEmpty()) << "it does not wait a second time";
}

TEST_F(JobObjJoinRunTest, NoticesBeforeExecutionThatTheNextCommandIsPrepared) {
  const auto a = prepared(m_a, 11, m_ab, true);
  setNext(m_a, 11, 12);
  forget();
  EXPECT_EQ(a->m_job.joinPreExecute(), WAIT);
  EXPECT_EQ(a->m_job.joinPreExecute(), WAIT);
  EXPECT_THAT(traces(), ElementsAre(info("joinPreExecute", "A: joinCmd seq=1: next prepared command is available")))
      << "once";
  forget();
  EXPECT_THAT(cycle({a.get()}), ElementsAre(WAIT));
  EXPECT_THAT(traces(), ElementsAre(info("joinAndWait", "A: joinCmd seq=1: A has joined")));
}

TEST_F(JobObjJoinRunTest, ReleasesNobodyBeforeAllNextCommandsArePrepared) {
  const auto a = prepared(m_a, 11, m_ab, true);
  const auto b = prepared(m_b, 21, m_ab, true);
  setNext(m_a, 11, 12);
  setNext(m_b, 21, 21);
  ASSERT_EQ(a->m_job.joinPreExecute(), WAIT);
  ASSERT_EQ(b->m_job.joinPreExecute(), WAIT);
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  setNext(m_b, 21, 22);
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(DONE, DONE));
}

TEST_F(JobObjJoinRunTest, RunsQueuedJoinsOneAfterTheOther) {
  const auto a1 = prepared(m_a, 11, m_ab);
  const auto a2 = prepared(m_a, 12, m_ab);
  const auto b1 = prepared(m_b, 21, m_ab);
  const auto b2 = prepared(m_b, 22, m_ab);
  EXPECT_THAT(cycle({a1.get(), b1.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({a1.get(), b1.get()}), ElementsAre(DONE, DONE));
  EXPECT_THAT(cycle({a2.get(), b2.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({a2.get(), b2.get()}), ElementsAre(DONE, DONE));
}

TEST_F(JobObjJoinRunTest, NeverFinishesOnceAMemberIsAborted) {
  const auto a = prepared(m_a, 11, m_ab);
  const auto b = prepared(m_b, 21, m_ab);
  forget();
  b->m_job.onAbort();
  EXPECT_THAT(traces(), ElementsAre("Warning job_obj_join onAbort: B: joinCmd seq=1: ABORTED"));
  EXPECT_THAT(formats(), ElementsAre("%s: joinCmd seq=%u: ABORTED"));
  EXPECT_TRUE(a->m_job.getContext()->isAborted());
  EXPECT_TRUE(a->m_job.getContext()->isAborted(1));
  EXPECT_FALSE(a->m_job.getContext()->isAborted(0));
  forget();
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_THAT(traces(), ElementsAre(info("joinAndWait", "A: joinCmd seq=1: A has joined"),
                                    info("joinAndWait", "B: joinCmd seq=1: B has joined")))
      << "members still join";
  EXPECT_EQ(a->m_job.getContext()->joinedCount(), 2U);
}

TEST_F(JobObjJoinRunTest, NeverFinishesWhenAMemberIsAbortedInTheLastCycle) {
  const auto a = prepared(m_a, 11, m_ab);
  const auto b = prepared(m_b, 21, m_ab);
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
  a->m_job.onAbort();
  EXPECT_THAT(cycle({a.get(), b.get()}), ElementsAre(WAIT, WAIT));
}

TEST_F(JobObjJoinRunTest, NotesAnAbortOncePerMember) {
  const auto a = prepared(m_a, 11, m_ab);
  const auto b = prepared(m_b, 21, m_ab);
  forget();
  a->m_job.onAbort();
  a->m_job.onAbort();
  b->m_job.onAbort();
  EXPECT_THAT(traces(), ElementsAre("Warning job_obj_join onAbort: A: joinCmd seq=1: ABORTED",
                                    "Warning job_obj_join onAbort: B: joinCmd seq=1: ABORTED"));
  EXPECT_TRUE(a->m_job.getContext()->isAborted(0));
  EXPECT_TRUE(a->m_job.getContext()->isAborted(1));
}

TEST_F(JobObjJoinRunTest, IgnoresAnAbortBeforeItIsPrepared) {
  const auto a = member(m_a, 11, m_ab);
  a->m_job.onAbort();
  JobObjJoin().onAbort();
  EXPECT_THAT(traces(), IsEmpty());
  EXPECT_EQ(a->m_job.registerForJoin(), JobResult::NoEffect);
  EXPECT_FALSE(a->m_job.getContext()->isAborted());
}

TEST_F(JobObjJoinRunTest, DoesNotCountAStrangerAsAMember) {
  const auto stranger = prepared(m_c, 31, m_ab);
  const auto a = prepared(m_a, 11, m_ab);
  const auto b = prepared(m_b, 21, m_ab);
  ASSERT_EQ(stranger->m_job.getContext(), a->m_job.getContext());
  EXPECT_THAT(cycle({stranger.get(), a.get()}), ElementsAre(WAIT, WAIT));
  EXPECT_EQ(a->m_job.getContext()->joinedCount(), 1U);
  stranger->m_job.onAbort();
  EXPECT_FALSE(a->m_job.getContext()->isAborted(0));
  EXPECT_FALSE(a->m_job.getContext()->isAborted(1));
}

TEST_F(JobObjJoinRunTest, NeverFinishesWithoutAnOccurrence) {
  JobObjJoin sut;
  EXPECT_TRUE(core::isFailure(sut.registerForJoin()));
  EXPECT_EQ(sut.getContext(), nullptr);
  EXPECT_NE(sut.joinPreExecute(), DONE);
  EXPECT_NE(sut.joinAndWait(), DONE);
  const auto bound = member(m_a, 11, {&m_a});
  EXPECT_NE(bound->m_job.joinPreExecute(), DONE);
  EXPECT_NE(bound->m_job.joinAndWait(), DONE);
  EXPECT_EQ(JoinCmdGlobalContext::listSize(), 0U);
}

TEST_F(JobObjJoinRunTest, TakesPartInNothingWhenItsObjectIsGone) {
  const auto orphan = member(m_a, 11, m_ab);
  orphan->m_objPtr.set(nullptr);
  EXPECT_EQ(orphan->m_job.registerForJoin(), JobResult::InvalidObject);
  EXPECT_EQ(orphan->m_job.getContext(), nullptr);
  EXPECT_EQ(JoinCmdGlobalContext::listSize(), 0U);
}

TEST_F(JobObjJoinRunTest, AnswersAnExceptionOfTheHostWithAFailure) {
  const auto waiting = prepared(m_a, 31, m_ab, true);
  const auto joining = prepared(m_a, 32, {&m_a});
  m_a.m_throws = true;
  EXPECT_TRUE(core::isFailure(waiting->m_job.joinPreExecute()));
  EXPECT_TRUE(core::isFailure(waiting->m_job.joinAndWait()));
  EXPECT_TRUE(core::isFailure(joining->m_job.joinAndWait()));
  // Looks at the states of all commands in open occurrences.
  EXPECT_TRUE(core::isFailure(member(m_b, 21, m_ab)->m_job.registerForJoin()));
}

TEST_F(JobObjJoinRunTest, FailsToPrepareWithoutMemory) {
  const auto a = member(m_a, 11, m_ab);
  JobResult result{};
  const int failures = withEachAllocationFailing([&] { result = a->m_job.registerForJoin(); },
                                                 [&](bool hasFailed) {
                                                   EXPECT_EQ(core::isFailure(result), hasFailed);
                                                   EXPECT_EQ(a->m_job.getContext() == nullptr, hasFailed);
                                                   EXPECT_EQ(JoinCmdGlobalContext::listSize(), hasFailed ? 0U : 1U);
                                                 });
  EXPECT_GT(failures, 0);
  const auto b = prepared(m_b, 21, m_ab);
  EXPECT_EQ(b->m_job.getContext(), a->m_job.getContext());
}

TEST_F(JobObjJoinRunTest, AllocatesNothingInTheCycle) {
  const auto a = prepared(m_a, 11, m_ab, true);
  const auto b = prepared(m_b, 21, m_ab);
  setNext(m_a, 11, 11);
  const test::AllocationCount count;
  EXPECT_EQ(a->m_job.joinPreExecute(), WAIT);
  EXPECT_EQ(a->m_job.joinAndWait(), WAIT);
  m_a.m_latestPreparedCmdID = 12;
  EXPECT_EQ(a->m_job.joinAndWait(), WAIT);
  EXPECT_EQ(b->m_job.joinAndWait(), WAIT);
  ++m_a.m_cycleCount;
  ++m_b.m_cycleCount;
  EXPECT_EQ(a->m_job.joinAndWait(), DONE);
  EXPECT_EQ(b->m_job.joinAndWait(), DONE);
  b->m_job.onAbort();
  EXPECT_EQ(count.get(), 0);
}

}  // namespace
}  // namespace motion::kavo::job
